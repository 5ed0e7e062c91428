#include "kybase/containers/list.h"

#include "kybase/core/memory_manager.h"

namespace {

void* CellAlloc(std::size_t size) { return KyMemoryManager::GetInstance().alloc(static_cast<unsigned int>(size)); }

void CellRelease(void* pointer, std::size_t size) {
  KyMemoryManager::GetInstance().release(pointer, static_cast<unsigned int>(size));
}

// Deletes the chain behind `cell` one cell at a time: each successor is cut loose
// before it is deleted, so its own destructor finds nothing to follow.
template <typename CellType>
void DeleteChainBehind(CellType* cell) {
  CellType* next = cell->getNext();
  while (next != nullptr) {
    CellType* after = next->getNext();
    next->setNext(nullptr);
    delete next;
    next = after;
  }
}

}  // namespace

// ---- Ky_List::Cell ----

void* Ky_List::Cell::operator new(std::size_t size) { return CellAlloc(size); }
void Ky_List::Cell::operator delete(void* pointer, std::size_t size) { CellRelease(pointer, size); }

Ky_List::Cell::~Cell() { DeleteChainBehind(this); }

void* Ky_List::Cell::operator[](unsigned long index) const {
  const Cell* cell = this;
  for (; cell != nullptr && index > 0; --index) cell = cell->next;
  return cell != nullptr ? cell->value : nullptr;
}

void Ky_List::Cell::setValue(unsigned long index, void* newValue) {
  Cell* cell = this;
  for (; cell != nullptr && index > 0; --index) cell = cell->next;
  if (cell != nullptr) cell->value = newValue;
}

const Ky_List::Cell* Ky_List::Cell::find(void* wanted) const {
  for (const Cell* cell = this; cell != nullptr; cell = cell->next)
    if (cell->value == wanted) return cell;
  return nullptr;
}

Ky_List::Cell* Ky_List::Cell::getLast() const {
  const Cell* cell = this;
  while (cell->next != nullptr) cell = cell->next;
  return const_cast<Cell*>(cell);
}

unsigned long Ky_List::Cell::getLength() const {
  unsigned long result = 0;
  for (const Cell* cell = this; cell != nullptr; cell = cell->next) ++result;
  return result;
}

Ky_List::Cell* Ky_List::Cell::copy() const {
  Cell* head = new Cell(value, nullptr);
  Cell* tail = head;
  for (const Cell* cell = next; cell != nullptr; cell = cell->next) {
    tail->next = new Cell(cell->value, nullptr);
    tail = tail->next;
  }
  return head;
}

Ky_List::Cell* Ky_List::Cell::remove(void* wanted) {
  if (value == wanted) {
    Cell* head = next;
    next = nullptr;
    delete this;
    return head;
  }
  for (Cell* previous = this; previous->next != nullptr; previous = previous->next) {
    Cell* cell = previous->next;
    if (cell->value == wanted) {
      previous->next = cell->next;
      cell->next = nullptr;
      delete cell;
      break;
    }
  }
  return this;
}

void Ky_List::Cell::apply(void (*function)(void*, void*), void* argument) {
  Cell* cell = this;
  while (cell != nullptr) {
    Cell* following = cell->next;
    function(cell->value, argument);
    cell = following;
  }
}

void* Ky_List::Cell::mapUntil(void* (*function)(void*, void*, void*), void* argument, void* stop) const {
  for (const Cell* cell = this; cell != nullptr; cell = cell->next) {
    void* result = function(cell->value, argument, stop);
    if (result != stop) return result;
  }
  return stop;
}

// ---- Ky_List ----

void* Ky_List::operator new(std::size_t size) { return CellAlloc(size); }
void Ky_List::operator delete(void* pointer, std::size_t size) { CellRelease(pointer, size); }

Ky_List::~Ky_List() {
  d();
  delete first;
}

void Ky_List::d() {
  for (Ky_SLIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator) iterator->d();
}

void Ky_List::e() {
  for (Ky_SLIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator) iterator->e();
}

void Ky_List::n(Cell* cell) {
  for (Ky_SLIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator)
    if (iterator->current == cell) iterator->current = cell->getNext();
}

void Ky_List::empty() {
  e();
  delete first;
  first = nullptr;
  last = nullptr;
  count = 0;
}

void Ky_List::append(Cell* cell) {
  if (last != nullptr)
    last->setNext(cell);
  else
    first = cell;
  last = cell;
  ++count;
}

void Ky_List::insert(Cell* cell, long position) {
  if (position < 0 || first == nullptr) {
    append(cell);
    return;
  }
  if (position == 0) {
    cell->setNext(first);
    first = cell;
    ++count;
    return;
  }
  Cell* previous = first;
  for (long step = 1; step < position && previous->getNext() != nullptr; ++step) previous = previous->getNext();
  cell->setNext(previous->getNext());
  previous->setNext(cell);
  if (cell->getNext() == nullptr) last = cell;
  ++count;
}

Ky_List::Cell* Ky_List::removeCell(void* value) {
  if (first == nullptr) return nullptr;
  Cell* cell = first;
  if (cell->getValue() == value) {
    n(cell);
    first = cell->getNext();
    if (first == nullptr) last = nullptr;
  } else {
    Cell* previous = cell;
    for (cell = cell->getNext(); cell != nullptr && cell->getValue() != value; cell = cell->getNext())
      previous = cell;
    if (cell == nullptr) return nullptr;
    n(cell);
    previous->setNext(cell->getNext());
    if (cell == last) last = previous;
  }
  cell->setNext(nullptr);
  --count;
  return cell;
}

void Ky_List::apply(void (*function)(void*, void*), void* argument) {
  if (first != nullptr) first->apply(function, argument);
}

void* Ky_List::mapUntil(void* (*function)(void*, void*, void*), void* argument, void* stop) const {
  return first != nullptr ? first->mapUntil(function, argument, stop) : stop;
}

void Ky_List::setValue(unsigned long index, void* value) {
  if (first != nullptr) first->setValue(index, value);
}

void Ky_List::swap(void* firstValue, void* secondValue) {
  if (first == nullptr) return;
  Cell* one = const_cast<Cell*>(first->find(firstValue));
  Cell* two = const_cast<Cell*>(first->find(secondValue));
  if (one == nullptr || two == nullptr) return;
  one->setValue(secondValue);
  two->setValue(firstValue);
}

void Ky_List::push(void* value) {
  if (count < 2) return;
  for (Cell* cell = first; cell->getNext() != nullptr; cell = cell->getNext()) {
    Cell* following = cell->getNext();
    if (following->getValue() == value) {
      following->setValue(cell->getValue());
      cell->setValue(value);
      return;
    }
  }
}

void Ky_List::pop(void* value) {
  if (count < 2) return;
  Cell* cell = const_cast<Cell*>(first->find(value));
  if (cell == nullptr || cell->getNext() == nullptr) return;
  cell->setValue(cell->getNext()->getValue());
  cell->getNext()->setValue(value);
}

void Ky_List::ai(Ky_SLIterator* iterator) {
  iterator->nextIterator = iterators;
  iterators = iterator;
}

void Ky_List::ri(Ky_SLIterator* iterator) {
  for (Ky_SLIterator** link = &iterators; *link != nullptr; link = &(*link)->nextIterator) {
    if (*link == iterator) {
      *link = iterator->nextIterator;
      iterator->nextIterator = nullptr;
      return;
    }
  }
}

void Ky_List::a(void* value) { append(new Cell(value, nullptr)); }

void Ky_List::i(void* value, long position) {
  if (position == 0) {
    first = new Cell(value, first);
    if (last == nullptr) last = first;
    ++count;
    return;
  }
  insert(new Cell(value, nullptr), position);
}

bool Ky_List::r(void* value) {
  Cell* cell = removeCell(value);
  if (cell == nullptr) return false;
  delete cell;
  return true;
}

bool Ky_List::f(void* value) const { return first != nullptr && first->find(value) != nullptr; }

void* Ky_List::get(unsigned long index) const { return first != nullptr ? (*first)[index] : nullptr; }

void Ky_List::copyInto(Ky_List& target) const {
  for (Cell* cell = first; cell != nullptr; cell = cell->getNext()) target.a(cell->getValue());
}

Ky_List* Ky_List::cp() const {
  Ky_List* result = new Ky_List;
  copyInto(*result);
  return result;
}

// ---- Ky_AList::Cell ----

void* Ky_AList::Cell::operator new(std::size_t size) { return CellAlloc(size); }
void Ky_AList::Cell::operator delete(void* pointer, std::size_t size) { CellRelease(pointer, size); }

Ky_AList::Cell::~Cell() { DeleteChainBehind(this); }

const Ky_AList::Cell* Ky_AList::Cell::find(void* wanted, void** found) const {
  for (const Cell* cell = this; cell != nullptr; cell = cell->next) {
    if (cell->key == wanted) {
      if (found != nullptr) *found = cell->value;
      return cell;
    }
  }
  return nullptr;
}

void* Ky_AList::Cell::mapUntil(void* (*function)(void*, void*, void*, void*), void* argument, void* stop) const {
  for (const Cell* cell = this; cell != nullptr; cell = cell->next) {
    void* result = function(cell->key, cell->value, argument, stop);
    if (result != stop) return result;
  }
  return stop;
}

// ---- Ky_AList ----

void* Ky_AList::operator new(std::size_t size) { return CellAlloc(size); }
void Ky_AList::operator delete(void* pointer, std::size_t size) { CellRelease(pointer, size); }

Ky_AList::~Ky_AList() {
  d();
  delete first;
}

void Ky_AList::d() {
  for (Ky_SALIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator) iterator->d();
}

void Ky_AList::e() {
  for (Ky_SALIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator) iterator->e();
}

void Ky_AList::n(Cell* cell) {
  for (Ky_SALIterator* iterator = iterators; iterator != nullptr; iterator = iterator->nextIterator)
    if (iterator->current == cell) iterator->current = cell->getNext();
}

void Ky_AList::empty() {
  e();
  delete first;
  first = nullptr;
  count = 0;
}

void Ky_AList::apply(void (*function)(void*, void*, void*), void* argument) {
  for (Cell* cell = first; cell != nullptr; cell = cell->getNext()) function(cell->getKey(), cell->getValue(), argument);
}

void* Ky_AList::mapUntil(void* (*function)(void*, void*, void*, void*), void* argument, void* stop) const {
  return first != nullptr ? first->mapUntil(function, argument, stop) : stop;
}

void Ky_AList::ai(Ky_SALIterator* iterator) {
  iterator->nextIterator = iterators;
  iterators = iterator;
}

void Ky_AList::ri(Ky_SALIterator* iterator) {
  for (Ky_SALIterator** link = &iterators; *link != nullptr; link = &(*link)->nextIterator) {
    if (*link == iterator) {
      *link = iterator->nextIterator;
      iterator->nextIterator = nullptr;
      return;
    }
  }
}

void Ky_AList::a(void* key, void* value) {
  Cell* cell = new Cell(key, value, nullptr);
  if (first == nullptr) {
    first = cell;
  } else {
    Cell* tail = first;
    while (tail->getNext() != nullptr) tail = tail->getNext();
    tail->setNext(cell);
  }
  ++count;
}

void Ky_AList::i(void* key, void* value, long position) {
  if (position < 0) {
    a(key, value);
    return;
  }
  if (position == 0 || first == nullptr) {
    first = new Cell(key, value, first);
    ++count;
    return;
  }
  Cell* previous = first;
  for (long step = 1; step < position && previous->getNext() != nullptr; ++step) previous = previous->getNext();
  previous->setNext(new Cell(key, value, previous->getNext()));
  ++count;
}

bool Ky_AList::f(void* key, void** value) const { return first != nullptr && first->find(key, value) != nullptr; }

void* Ky_AList::g(void* key) const {
  void* value = nullptr;
  if (first != nullptr) first->find(key, &value);
  return value;
}

bool Ky_AList::r(void* key, void* value) {
  Cell* cell = first != nullptr ? const_cast<Cell*>(first->find(key, nullptr)) : nullptr;
  if (cell == nullptr) return false;
  cell->setValue(value);
  return true;
}

bool Ky_AList::unlink(Cell* cell, Cell* previous) {
  if (cell == nullptr) return false;
  n(cell);
  if (previous != nullptr)
    previous->setNext(cell->getNext());
  else
    first = cell->getNext();
  cell->setNext(nullptr);
  delete cell;
  --count;
  return true;
}

bool Ky_AList::rm(void* key) {
  Cell* previous = nullptr;
  Cell* cell = gfc(key, &previous);
  return unlink(cell, previous);
}

bool Ky_AList::rm(void* key, void* value) {
  Cell* previous = nullptr;
  Cell* cell = gc(key, value, &previous);
  return unlink(cell, previous);
}

Ky_AList::Cell* Ky_AList::gc(void* key, void* value, Cell** previous) const {
  Cell* before = nullptr;
  for (Cell* cell = first; cell != nullptr; before = cell, cell = cell->getNext()) {
    if (cell->getKey() == key && cell->getValue() == value) {
      if (previous != nullptr) *previous = before;
      return cell;
    }
  }
  if (previous != nullptr) *previous = before;
  return nullptr;
}

Ky_AList::Cell* Ky_AList::gfc(void* key, Cell** previous) const {
  Cell* before = nullptr;
  for (Cell* cell = first; cell != nullptr; before = cell, cell = cell->getNext()) {
    if (cell->getKey() == key) {
      if (previous != nullptr) *previous = before;
      return cell;
    }
  }
  if (previous != nullptr) *previous = before;
  return nullptr;
}

// ---- iterators ----

Ky_LIterator& Ky_LIterator::operator++() {
  if (current != nullptr) current = current->getNext();
  return *this;
}

Ky_LIterator& Ky_LIterator::operator++(int) { return ++*this; }

void Ky_LIterator::r(void* cell) {
  if (current == cell) current = current->getNext();
}

void* Ky_LIterator::nextElement() {
  if (current == nullptr) return nullptr;
  void* value = current->getValue();
  current = current->getNext();
  return value;
}

Ky_ALIterator& Ky_ALIterator::operator++() {
  if (current != nullptr) current = current->getNext();
  return *this;
}

Ky_ALIterator& Ky_ALIterator::operator++(int) { return ++*this; }

void Ky_ALIterator::r(void* cell) {
  if (current == cell) current = current->getNext();
}

void* Ky_ALIterator::nextElement() {
  if (current == nullptr) return nullptr;
  void* value = current->getValue();
  current = current->getNext();
  return value;
}

void* Ky_ALIterator::nextKey() {
  if (current == nullptr) return nullptr;
  void* key = current->getKey();
  current = current->getNext();
  return key;
}

void* Ky_ALIterator::nextPair(void*& value) {
  if (current == nullptr) return nullptr;
  value = current->getValue();
  return nextKey();
}

Ky_SLIterator::Ky_SLIterator(const Ky_List& list) : Ky_LIterator(list) { const_cast<Ky_List&>(list).ai(this); }

Ky_SLIterator::~Ky_SLIterator() {
  if (list != nullptr) list->ri(this);
}

Ky_SALIterator::Ky_SALIterator(const Ky_AList& list) : Ky_ALIterator(list) { const_cast<Ky_AList&>(list).ai(this); }

Ky_SALIterator::~Ky_SALIterator() {
  if (list != nullptr) list->ri(this);
}
