// KyPathList: a search path of three sublists searched in a fixed order -- the
// previous list, the list and the post list -- each a chain of directories (every
// entry is forced to a directory when stored). Its text form joins the entries of all
// three with KyPathList::kSeparator (":" here), and parsing splits on it, keeping empty
// pieces as empty paths.
//
// Taking a sublist over from another list (setX, addInX of a list) shares the other's
// items rather than copying them, so a later change to the shared chain shows through
// both lists. Items are reference counted: each is freed once, when the last list or
// item linking to it lets go, and a link that would close a cycle (a list added to
// itself) links a copy instead.
//
// KyPathListIterator walks the three sublists as one sequence; it holds raw pointers
// and does not survive a change to its list. Failure: nothing is reported; findInPath
// answers false. Threads: none; a list is plain shared data.
#ifndef KYBASE_PATHS_PATH_LIST_H
#define KYBASE_PATHS_PATH_LIST_H

#include "kybase/core/export.h"
#include "kybase/paths/path_name.h"
#include "kybase/text/kystring.h"

class KyPathItem;

/// A search path of three sublists; see the family page.
class KY_EXPORT KyPathList {
 public:
  /// The separator of the text form.
  static constexpr char kSeparator = ':';

  /// An empty search path.
  KyPathList();
  /// A search path whose list holds the entries of `text`, split on kSeparator.
  explicit KyPathList(const KyString& text);
  /// Lets go of the three sublists; shared items live on in the other lists.
  ~KyPathList();
  /// Sublists are shared by the set and add operations, not by copying.
  KyPathList(const KyPathList&) = delete;
  /// Sublists are shared by the set and add operations, not by assignment.
  KyPathList& operator=(const KyPathList&) = delete;

  /// \name Replacing a sublist
  /** @{ */
  /// Replaces the sublist the name gives (list, previous list, post list) by: the same
  /// sublist of another list, shared; one path; or the entries of a text split on
  /// kSeparator.
  void setList(const KyPathList& other);
  void setList(const KyPathName& path);
  void setList(const KyString& text);
  void setPrevList(const KyPathList& other);
  void setPrevList(const KyPathName& path);
  void setPrevList(const KyString& text);
  void setPostList(const KyPathList& other);
  void setPostList(const KyPathName& path);
  void setPostList(const KyString& text);

  /** @} */
  /// \name Appending to a sublist
  /** @{ */
  /// Appends to the sublist the name gives: the same sublist of another list, shared;
  /// one path; or the entries of a text split on kSeparator.
  void addInList(const KyPathList& other);
  void addInList(const KyPathName& path);
  void addInList(const KyString& text);
  void addInPrevList(const KyPathList& other);
  void addInPrevList(const KyPathName& path);
  void addInPrevList(const KyString& text);
  void addInPostList(const KyPathList& other);
  void addInPostList(const KyPathName& path);
  void addInPostList(const KyString& text);

  /** @} */
  /// \name Inserting at the front of a sublist
  /** @{ */
  /// Puts in front of the sublist the name gives: a copy of the same sublist of another
  /// list; one path; or the entries of a text split on kSeparator.
  void insertInList(const KyPathList& other);
  void insertInList(const KyPathName& path);
  void insertInList(const KyString& text);
  void insertInPrevList(const KyPathList& other);
  void insertInPrevList(const KyPathName& path);
  void insertInPrevList(const KyString& text);
  void insertInPostList(const KyPathList& other);
  void insertInPostList(const KyPathName& path);
  void insertInPostList(const KyString& text);

  /** @} */
  /// \name Removing from a sublist
  /** @{ */
  /// The first item equal to the argument; the text is one path, not split.
  void removeFromList(const KyPathName& path);
  void removeFromList(const KyString& text);
  void removeFromPrevList(const KyPathName& path);
  void removeFromPrevList(const KyString& text);
  void removeFromPostList(const KyPathName& path);
  void removeFromPostList(const KyString& text);

  /** @} */
  /// The first directory, in search order, in which file merged onto it exists. With
  /// trace, each step is a line on standard output.
  bool findInPath(const KyPathName& file, KyPathName& found, bool trace) const;
  /// Keeps the first of equal entries in search order.
  void unique();

  /// The text form of all three sublists, in search order, joined with kSeparator.
  KyString getString() const;
  /// The text form of the list.
  KyString getListString() const;
  /// The text form of the previous list.
  KyString getPrevListString() const;
  /// The text form of the post list.
  KyString getPostListString() const;

 private:
  friend class KyPathListIterator;
  KyPathItem* getList() const { return list; }
  KyPathItem* getPrevList() const { return prevList; }
  KyPathItem* getPostList() const { return postList; }

  KyPathItem* prevList = nullptr;
  KyPathItem* list = nullptr;
  KyPathItem* postList = nullptr;
};

/// Walks the previous list, the list and the post list of a KyPathList as one sequence.
class KY_EXPORT KyPathListIterator {
 public:
  /// An iterator over nothing, done from the start.
  KyPathListIterator() = default;
  /// Stands on the first entry of `list` in search order.
  explicit KyPathListIterator(const KyPathList& list);
  /// A copy standing on the same entry.
  KyPathListIterator(const KyPathListIterator&) = default;
  /// Stands on the other's entry.
  KyPathListIterator& operator=(const KyPathListIterator&) = default;

  /// 1 when the walk is done, else 0.
  int operator!() const { return item == nullptr ? 1 : 0; }
  /// The current entry; only while not done.
  operator const KyPathName&() const;  // NOLINT
  /// Moves to the next entry, into the next sublist when one ends.
  KyPathListIterator& operator++(int);

 private:
  void init();

  const KyPathList* list = nullptr;
  KyPathItem* item = nullptr;
  int phase = 0;
};

#endif  // KYBASE_PATHS_PATH_LIST_H
