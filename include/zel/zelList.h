#ifndef ZEL_LIST_H
#define ZEL_LIST_H

#include <zel/zelExport.h>

#include <cassert>
#include <cstddef>

/// The links that make an object an item of an intrusive list. A class becomes an item by deriving
/// from this class, or from several classes derived from it to lie in several lists at a time.
/// Lists link items and never own them. Not safe for use by several threads at a time.
class zelListItem {
public:
    zelListItem() { initLinks(); }
    zelListItem(const zelListItem&) = delete;
    zelListItem& operator=(const zelListItem&) = delete;
    /// An item is destroyed unlinked, or as the head of an empty list.
    ~zelListItem() {
        // NOLINTNEXTLINE(modernize-use-nullptr): the assertion's text is part of the contract.
        assert(next == prev && (next == NULL || next == this));
    }

    /// Forgets the links without telling the neighbours.
    void initLinks() { next = prev = nullptr; }
    bool isLinked() const { return next != nullptr && prev != nullptr; }
    /// Takes the item out of its list, if it is in one.
    void unlink() {
        if (isLinked()) {
            next->prev = prev;
            prev->next = next;
            initLinks();
        }
    }

    zelListItem* next;
    zelListItem* prev;
};

/// A circular, doubly linked list of T, linked through T's base B, which derives from zelListItem.
/// Null stands for "no item". Items that are added must not be linked already.
template <class T, class B>
class zelMultiList {
public:
    zelMultiList() { hd.next = hd.prev = &hd; }
    zelMultiList(const zelMultiList&) = delete;
    zelMultiList& operator=(const zelMultiList&) = delete;

    bool isEmpty() const { return hd.next == &hd; }
    T* head() const { return itemOf(hd.next); }
    T* tail() const { return itemOf(hd.prev); }
    /// The neighbour of a linked item; null at the end of the list.
    T* getNext(const T* item) const { return itemOf(linkOf(item)->next); }
    T* getPrev(const T* item) const { return itemOf(linkOf(item)->prev); }

    /// Links the item at the tail.
    void append(T* item) { insertRun(hd.prev, linkOf(item)); }
    /// Links the item at the head.
    void insert(T* item) { insertRun(&hd, linkOf(item)); }
    /// Links the item behind or in front of `place`, which is in the list.
    void insertAfter(T* item, T* place) { insertRun(linkOf(place), linkOf(item)); }
    void insertBefore(T* item, T* place) { insertRun(linkOf(place)->prev, linkOf(item)); }

    /// Moves all items of `other`, in their order, to this list's tail or head.
    void appendList(zelMultiList& other) { moveAll(other, hd.prev); }
    void insertList(zelMultiList& other) { moveAll(other, &hd); }
    /// Moves the items `first` to `last` of another list, in their order, to this list's tail or
    /// head. `last` is `first` or stands behind it.
    void appendSubList(T* first, T* last) { moveRun(linkOf(first), linkOf(last), hd.prev); }
    void insertSubList(T* first, T* last) { moveRun(linkOf(first), linkOf(last), &hd); }

    /// Takes the item out of this list.
    void unlink(T* item) { linkOf(item)->unlink(); }
    /// Takes all items out of the list.
    void clear() {
        while (!isEmpty()) {
            hd.next->unlink();
        }
    }

private:
    template <class U, class C>
    friend class zelMultiListIter;

    static zelListItem* linkOf(T* item) { return static_cast<B*>(item); }
    static const zelListItem* linkOf(const T* item) { return static_cast<const B*>(item); }

    T* itemOf(zelListItem* link) const {
        return link == &hd ? nullptr : static_cast<T*>(static_cast<B*>(link));
    }

    static void insertRun(zelListItem* place, zelListItem* item) {
        assert(!item->isLinked());
        joinRun(place, item, item);
    }

    static void joinRun(zelListItem* place, zelListItem* first, zelListItem* last) {
        first->prev = place;
        last->next = place->next;
        place->next->prev = last;
        place->next = first;
    }

    static void moveRun(zelListItem* first, zelListItem* last, zelListItem* place) {
        first->prev->next = last->next;
        last->next->prev = first->prev;
        joinRun(place, first, last);
    }

    static void moveAll(zelMultiList& other, zelListItem* place) {
        if (!other.isEmpty()) {
            moveRun(other.hd.next, other.hd.prev, place);
        }
    }

    B hd;
};

/// A zelMultiList of items that lie in one list only.
template <class T>
class zelList : public zelMultiList<T, zelListItem> {};

/// A walk over a list, which must outlive it. The item handed out may be unlinked during the walk.
template <class T, class B>
class zelMultiListIter {
public:
    explicit zelMultiListIter(const zelMultiList<T, B>& list)
        : head(const_cast<B*>(&list.hd)), succ(head->next) {}

    /// The next item, or null at the end of the list; the walk then starts over.
    T* next() {
        zelListItem* current = succ;
        succ = succ->next;
        return itemOf(current);
    }
    /// The item in front of the one that next() will hand out: the last one handed out, as long as
    /// it is linked. Null at the start and at the end.
    T* curr() const { return itemOf(succ->prev); }
    /// Starts over.
    void reset() { succ = head->next; }

private:
    T* itemOf(zelListItem* link) const {
        return link == head ? nullptr : static_cast<T*>(static_cast<B*>(link));
    }

    zelListItem* head;
    zelListItem* succ;
};

/// A zelMultiListIter over a zelList.
template <class T>
class zelListIter : public zelMultiListIter<T, zelListItem> {
public:
    explicit zelListIter(const zelList<T>& list) : zelMultiListIter<T, zelListItem>(list) {}
};

/// A file name suffix in the list of a database entry. Keeps the pointer to the text, which must
/// live as long as the item, and neither copies nor frees it.
class zelSuffixItem : public zelListItem {
public:
    explicit zelSuffixItem(char* text) : suffix(text) {}

    char* suffix;
};

#endif
