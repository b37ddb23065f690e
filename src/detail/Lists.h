#pragma once

#include <QList>

#include <new>
#include <span>
#include <utility>

namespace vex::detail {

// Where memory runs out, these throw std::bad_alloc. QList of Qt 6.4 takes a null pointer for
// memory in its constructor with a size, in reserve() of a list that holds something, and where a
// shared list becomes one of its own.

/// An empty list with room for @p size entries, also for resize().
template <typename T>
QList<T> listWithRoom(qsizetype size)
{
    QList<T> list;
    list.reserve(size);
    if (list.capacity() < size)
        throw std::bad_alloc();
    return list;
}

/// Appends @p values to @p list, which is not shared or empty.
template <typename T>
void append(QList<T> *list, std::span<const T> values)
{
    using Place = typename QList<T>::const_iterator;
    list->append(Place(values.data()), Place(values.data() + values.size()));
}

/// Makes @p list one that shares nothing, so that writing to it needs no memory.
template <typename T>
void detach(QList<T> *list)
{
    if (list->isDetached())
        return;
    QList<T> own = listWithRoom<T>(list->size());
    own.append(list->cbegin(), list->cend());
    *list = std::move(own);
}

} // namespace vex::detail
