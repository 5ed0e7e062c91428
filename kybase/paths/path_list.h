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

class KY_EXPORT KyPathList {
 public:
  static constexpr char kSeparator = ':';

  KyPathList();
  explicit KyPathList(const KyString& text);
  ~KyPathList();
  KyPathList(const KyPathList&) = delete;
  KyPathList& operator=(const KyPathList&) = delete;

  void setList(const KyPathList& other);
  void setList(const KyPathName& path);
  void setList(const KyString& text);
  void setPrevList(const KyPathList& other);
  void setPrevList(const KyPathName& path);
  void setPrevList(const KyString& text);
  void setPostList(const KyPathList& other);
  void setPostList(const KyPathName& path);
  void setPostList(const KyString& text);

  void addInList(const KyPathList& other);
  void addInList(const KyPathName& path);
  void addInList(const KyString& text);
  void addInPrevList(const KyPathList& other);
  void addInPrevList(const KyPathName& path);
  void addInPrevList(const KyString& text);
  void addInPostList(const KyPathList& other);
  void addInPostList(const KyPathName& path);
  void addInPostList(const KyString& text);

  void insertInList(const KyPathList& other);
  void insertInList(const KyPathName& path);
  void insertInList(const KyString& text);
  void insertInPrevList(const KyPathList& other);
  void insertInPrevList(const KyPathName& path);
  void insertInPrevList(const KyString& text);
  void insertInPostList(const KyPathList& other);
  void insertInPostList(const KyPathName& path);
  void insertInPostList(const KyString& text);

  // The first item equal to the argument; the text is one path, not split.
  void removeFromList(const KyPathName& path);
  void removeFromList(const KyString& text);
  void removeFromPrevList(const KyPathName& path);
  void removeFromPrevList(const KyString& text);
  void removeFromPostList(const KyPathName& path);
  void removeFromPostList(const KyString& text);

  // The first directory, in search order, in which file merged onto it exists. With
  // trace, each step is a line on standard output.
  bool findInPath(const KyPathName& file, KyPathName& found, bool trace) const;
  // Keeps the first of equal entries in search order.
  void unique();

  KyString getString() const;
  KyString getListString() const;
  KyString getPrevListString() const;
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

class KY_EXPORT KyPathListIterator {
 public:
  KyPathListIterator() = default;
  explicit KyPathListIterator(const KyPathList& list);
  KyPathListIterator(const KyPathListIterator&) = default;
  KyPathListIterator& operator=(const KyPathListIterator&) = default;

  int operator!() const { return item == nullptr ? 1 : 0; }
  // The current entry; only while not done.
  operator const KyPathName&() const;  // NOLINT
  KyPathListIterator& operator++(int);

 private:
  void init();

  const KyPathList* list = nullptr;
  KyPathItem* item = nullptr;
  int phase = 0;
};

#endif  // KYBASE_PATHS_PATH_LIST_H
