// A doubly linked list with a head and a tail sentinel of the element type.
//
// Elements are plain records with `previous` and `next` members. The head
// sentinel's previous link and the tail sentinel's next link are null, so a
// real element in a list always has two non-null links and an unlinked
// element has two null ones. Elements carry no parent link: an element finds
// its index by walking back to the head.
//
// Every list of the system (sheets, templates, remarks, locale lists,
// statistics, the window stack) is a thin use of these functions.
#pragma once

#include <glib.h>

#include <concepts>
#include <cstdint>

namespace ov
{

template <class T>
concept ListNode = requires(T node)
{
    {
        node.previous
        } -> std::convertible_to<T *>;
    {
        node.next
        } -> std::convertible_to<T *>;
};

template <ListNode T> struct SentinelList {
    T *head = nullptr;
    T *tail = nullptr;

    class iterator
    {
      public:
        explicit iterator(T *node) : node_(node) {}
        T *operator*() const { return node_; }
        // Reads the successor before the caller may unlink the current one.
        iterator &operator++()
        {
            node_ = node_->next;
            return *this;
        }
        bool operator==(const iterator &other) const = default;

      private:
        T *node_;
    };

    // Iterates the real elements; the current element may be unlinked or
    // destroyed inside the loop body only with `for (T *n = first(); ...)`.
    iterator begin() const { return iterator(head->next); }
    iterator end() const { return iterator(tail); }

    bool is_empty() const { return head->next == tail; }
    T *first() const { return is_empty() ? nullptr : head->next; }
    T *last() const { return is_empty() ? nullptr : tail->previous; }
    bool is_end(const T *node) const { return node == tail; }
};

// Allocates both sentinels zero-filled and joins them.
template <ListNode T> void list_init(SentinelList<T> &list)
{
    list.head = new T{};
    list.tail = new T{};
    list.head->next = list.tail;
    list.tail->previous = list.head;
}

// Links node directly after reference. Neither is checked: the caller makes
// sure node is unlinked and reference is in a list.
template <ListNode T> void list_insert_after(T *node, T *reference)
{
    node->previous = reference;
    node->next = reference->next;
    reference->next->previous = node;
    reference->next = node;
}

template <ListNode T> void list_insert_before(T *node, T *reference)
{
    list_insert_after(node, reference->previous);
}

template <ListNode T> void list_append(SentinelList<T> &list, T *node)
{
    list_insert_before(node, list.tail);
}

template <ListNode T> void list_prepend(SentinelList<T> &list, T *node)
{
    list_insert_after(node, list.head);
}

// Unlinks node from its siblings and nulls both links; an unlinked node is
// left as it is.
template <ListNode T> void list_unlink(T *node)
{
    if (node->previous != nullptr)
        node->previous->next = node->next;
    if (node->next != nullptr)
        node->next->previous = node->previous;
    node->previous = nullptr;
    node->next = nullptr;
}

// Zero-based position: the number of steps back to the head sentinel, less
// one for the sentinel itself.
template <ListNode T> std::uint32_t list_index(const T *node)
{
    std::uint32_t steps = 0;
    for (const T *walk = node->previous; walk != nullptr; walk = walk->previous)
        ++steps;
    return steps - 1;
}

template <ListNode T> std::uint32_t list_count(const SentinelList<T> &list)
{
    std::uint32_t count = 0;
    for (T *node = list.head->next; node != list.tail; node = node->next)
        ++count;
    return count;
}

// Element at index, or null past the end.
template <ListNode T> T *list_nth(const SentinelList<T> &list, std::uint32_t index)
{
    for (T *node = list.head->next; node != list.tail; node = node->next)
        if (index-- == 0)
            return node;
    return nullptr;
}

// Swaps node with its previous sibling; refuses (FALSE, nothing changed)
// when node is already first.
template <ListNode T> gboolean list_move_up(T *node)
{
    T *previous = node->previous;
    if (previous->previous == nullptr)
        return FALSE;
    list_unlink(node);
    list_insert_before(node, previous);
    return TRUE;
}

// Mirror of list_move_up; refuses when node is already last.
template <ListNode T> gboolean list_move_down(T *node)
{
    T *next = node->next;
    if (next->next == nullptr)
        return FALSE;
    list_unlink(node);
    list_insert_after(node, next);
    return TRUE;
}

// Destroys every element from the front, then frees the sentinels. The
// element's destroy function must unlink it from the list.
template <ListNode T, class Destroy> void list_destroy(SentinelList<T> &list, Destroy destroy)
{
    if (list.head == nullptr)
        return;
    while (list.head->next != list.tail) {
        T *node = list.head->next;
        list_unlink(node);
        destroy(node);
    }
    delete list.head;
    delete list.tail;
    list.head = nullptr;
    list.tail = nullptr;
}

// Appends a clone of every element of source, in order, to destination.
// A clone function returning null stops the copy and makes it fail.
template <ListNode T, class Clone>
bool list_clone_into(SentinelList<T> &destination, const SentinelList<T> &source, Clone clone)
{
    for (T *node = source.head->next; node != source.tail; node = node->next) {
        T *copy = clone(node);
        if (copy == nullptr)
            return false;
        list_append(destination, copy);
    }
    return true;
}

} // namespace ov
