// KyPathList: chains of reference-counted directory items, their text form, the
// search, and the iterator over all three sublists.
#include "kybase/paths/path_list.h"

#include <iostream>

// A directory of a chain. refs counts the links to it: a sublist head or the next
// pointer of another item, in this list or in one that shares the chain.
class KyPathItem {
 public:
  explicit KyPathItem(const KyPathName& name) : path(name) { path.forceDirectory(); }

  KyPathName path;
  KyPathItem* next = nullptr;
  unsigned long refs = 1;
};

namespace {

void Retain(KyPathItem* item) {
  if (item != nullptr) ++item->refs;
}

// Drops one link to item; an item nobody links to any more goes, and with it its link
// to the next, without recursion however long the chain.
void Release(KyPathItem* item) {
  while (item != nullptr && --item->refs == 0) {
    KyPathItem* next = item->next;
    delete item;
    item = next;
  }
}

// A sublist takes a new chain, made before the old one is released (the new items may
// share the old ones).
void Replace(KyPathItem*& sublist, KyPathItem* chain) {
  Release(sublist);
  sublist = chain;
}

KyPathItem* Last(KyPathItem* head) {
  while (head != nullptr && head->next != nullptr) head = head->next;
  return head;
}

// A new chain of the paths in text, split on the separator; empty pieces stay.
KyPathItem* Parse(const KyString& text) {
  KyPathItem* head = nullptr;
  KyPathItem* tail = nullptr;
  const KyString separator(&KyPathList::kSeparator, 1);
  int start = 0;
  for (;;) {
    const int hit = text.getIndexOf(separator, start);
    const bool last = hit < 0 || hit >= static_cast<int>(text.getLength());
    auto* item = new KyPathItem(KyPathName(text.getSubString(start, last ? -1 : hit)));
    (tail == nullptr ? head : tail->next) = item;
    tail = item;
    if (last) return head;
    start = hit + 1;
  }
}

// A chain of new items with the same paths.
KyPathItem* Copy(const KyPathItem* source) {
  KyPathItem* head = nullptr;
  KyPathItem* tail = nullptr;
  for (; source != nullptr; source = source->next) {
    auto* item = new KyPathItem(source->path);
    (tail == nullptr ? head : tail->next) = item;
    tail = item;
  }
  return head;
}

// Links chain (whose link the caller hands over) at the end of the sublist.
void Append(KyPathItem*& head, KyPathItem* chain) {
  if (chain == nullptr) return;
  KyPathItem* last = Last(head);
  (last == nullptr ? head : last->next) = chain;
}

bool Reaches(const KyPathItem* from, const KyPathItem* target) {
  for (; from != nullptr; from = from->next)
    if (from == target) return true;
  return false;
}

// The other list's sublist joins the end of this one, shared. A copy is built on the
// way and used only where sharing would close a cycle.
void AppendShared(KyPathItem*& head, KyPathItem* source, bool replace) {
  Retain(source);
  KyPathItem* copy = Copy(source);
  if (replace) {
    Release(head);
    head = nullptr;
  }
  if (Reaches(source, Last(head))) {
    Append(head, copy);
    Release(source);
    return;
  }
  Append(head, source);
  Release(copy);
}

void Prepend(KyPathItem*& head, KyPathItem* chain) {
  if (chain == nullptr) return;
  Last(chain)->next = head;
  head = chain;
}

void Remove(KyPathItem*& head, const KyPathName& path) {
  for (KyPathItem** link = &head; *link != nullptr; link = &(*link)->next) {
    KyPathItem* item = *link;
    if (!(item->path == path)) continue;
    Retain(item->next);
    *link = item->next;
    Release(item);
    return;
  }
}

void Write(KyString& result, const KyPathItem* item) {
  if (item == nullptr) return;
  const KyString separator(&KyPathList::kSeparator, 1);
  if (!result.isEmpty()) result += separator;
  result += KyString(item->path);
  for (item = item->next; item != nullptr; item = item->next) {
    result += separator;
    result += KyString(item->path);
  }
}

}  // namespace

KyPathList::KyPathList() = default;

KyPathList::KyPathList(const KyString& text) : list(Parse(text)) {}

KyPathList::~KyPathList() {
  Release(prevList);
  Release(list);
  Release(postList);
}

void KyPathList::setList(const KyPathList& other) { AppendShared(list, other.list, true); }
void KyPathList::setPrevList(const KyPathList& other) { AppendShared(prevList, other.prevList, true); }
void KyPathList::setPostList(const KyPathList& other) { AppendShared(postList, other.postList, true); }

void KyPathList::setList(const KyPathName& path) { Replace(list, new KyPathItem(path)); }
void KyPathList::setPrevList(const KyPathName& path) { Replace(prevList, new KyPathItem(path)); }
void KyPathList::setPostList(const KyPathName& path) { Replace(postList, new KyPathItem(path)); }

void KyPathList::setList(const KyString& text) { Replace(list, Parse(text)); }
void KyPathList::setPrevList(const KyString& text) { Replace(prevList, Parse(text)); }
void KyPathList::setPostList(const KyString& text) { Replace(postList, Parse(text)); }

void KyPathList::addInList(const KyPathList& other) { AppendShared(list, other.list, false); }
void KyPathList::addInPrevList(const KyPathList& other) { AppendShared(prevList, other.prevList, false); }
void KyPathList::addInPostList(const KyPathList& other) { AppendShared(postList, other.postList, false); }

void KyPathList::addInList(const KyPathName& path) { Append(list, new KyPathItem(path)); }
void KyPathList::addInPrevList(const KyPathName& path) { Append(prevList, new KyPathItem(path)); }
void KyPathList::addInPostList(const KyPathName& path) { Append(postList, new KyPathItem(path)); }

void KyPathList::addInList(const KyString& text) { Append(list, Parse(text)); }
void KyPathList::addInPrevList(const KyString& text) { Append(prevList, Parse(text)); }
void KyPathList::addInPostList(const KyString& text) { Append(postList, Parse(text)); }

void KyPathList::insertInList(const KyPathList& other) { Prepend(list, Copy(other.list)); }
void KyPathList::insertInPrevList(const KyPathList& other) { Prepend(prevList, Copy(other.prevList)); }
void KyPathList::insertInPostList(const KyPathList& other) { Prepend(postList, Copy(other.postList)); }

void KyPathList::insertInList(const KyPathName& path) { Prepend(list, new KyPathItem(path)); }
void KyPathList::insertInPrevList(const KyPathName& path) { Prepend(prevList, new KyPathItem(path)); }
void KyPathList::insertInPostList(const KyPathName& path) { Prepend(postList, new KyPathItem(path)); }

void KyPathList::insertInList(const KyString& text) { Prepend(list, Parse(text)); }
void KyPathList::insertInPrevList(const KyString& text) { Prepend(prevList, Parse(text)); }
void KyPathList::insertInPostList(const KyString& text) { Prepend(postList, Parse(text)); }

void KyPathList::removeFromList(const KyPathName& path) { Remove(list, path); }
void KyPathList::removeFromList(const KyString& text) { Remove(list, KyPathName(text)); }
void KyPathList::removeFromPrevList(const KyPathName& path) { Remove(prevList, path); }
void KyPathList::removeFromPrevList(const KyString& text) { Remove(prevList, KyPathName(text)); }
void KyPathList::removeFromPostList(const KyPathName& path) { Remove(postList, path); }
void KyPathList::removeFromPostList(const KyString& text) { Remove(postList, KyPathName(text)); }

bool KyPathList::findInPath(const KyPathName& file, KyPathName& found, bool trace) const {
  for (const KyPathItem* head : {prevList, list, postList}) {
    for (const KyPathItem* item = head; item != nullptr; item = item->next) {
      KyPathName work(item->path);
      work.merge(file);
      if (work.doesExist()) {
        if (trace) std::cout << "KyvPathList::findInPath found: " << work.getString(KyPathName::kSystemPathType) << "." << std::endl;
        found = work;
        return true;
      }
      if (trace)
        std::cout << "KyvPathList::findInPath file " << file.getString(KyPathName::kSystemPathType) << " not in "
                  << item->path.getString(KyPathName::kSystemPathType) << "." << std::endl;
    }
  }
  return false;
}

void KyPathList::unique() {
  KyPathItem** heads[] = {&prevList, &list, &postList};
  for (int base = 0; base < 3; ++base) {
    for (KyPathItem* item = *heads[base]; item != nullptr; item = item->next) {
      for (KyPathItem** link = &item->next; *link != nullptr;) {
        if ((*link)->path == item->path) {
          KyPathItem* gone = *link;
          Retain(gone->next);
          *link = gone->next;
          Release(gone);
        } else {
          link = &(*link)->next;
        }
      }
      for (int later = base + 1; later < 3; ++later) {
        for (KyPathItem** link = heads[later]; *link != nullptr;) {
          if ((*link)->path == item->path) {
            KyPathItem* gone = *link;
            Retain(gone->next);
            *link = gone->next;
            Release(gone);
          } else {
            link = &(*link)->next;
          }
        }
      }
    }
  }
}

KyString KyPathList::getString() const {
  KyString result;
  Write(result, prevList);
  Write(result, list);
  Write(result, postList);
  return result;
}

KyString KyPathList::getListString() const {
  KyString result;
  Write(result, list);
  return result;
}

KyString KyPathList::getPrevListString() const {
  KyString result;
  Write(result, prevList);
  return result;
}

KyString KyPathList::getPostListString() const {
  KyString result;
  Write(result, postList);
  return result;
}

KyPathListIterator::KyPathListIterator(const KyPathList& pathList) : list(&pathList) { init(); }

void KyPathListIterator::init() {
  item = nullptr;
  phase = 0;
  if (list == nullptr) return;
  item = list->getPrevList();
  if (item != nullptr) return;
  item = list->getList();
  phase = 1;
  if (item != nullptr) return;
  item = list->getPostList();
  phase = item != nullptr ? 2 : 0;
}

KyPathListIterator::operator const KyPathName&() const { return item->path; }

KyPathListIterator& KyPathListIterator::operator++(int) {
  if (list == nullptr) {
    item = nullptr;
    phase = 0;
    return *this;
  }
  if (item == nullptr) return *this;
  item = item->next;
  if (item == nullptr && phase == 0) {
    item = list->getList();
    phase = 1;
  }
  if (item == nullptr && phase == 1) {
    item = list->getPostList();
    phase = 2;
  }
  if (item == nullptr && phase == 2) phase = 0;
  return *this;
}
