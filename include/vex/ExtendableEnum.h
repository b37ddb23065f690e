#pragma once

#include <QLatin1StringView>

#include <algorithm>
#include <utility>
#include <vector>

#include <vex/Export.h>

/// One value of an enumeration that any module may extend: a name and what belongs to it.
///
/// Constructing a value registers it, unless its name is known: the first value of a name is the
/// one that lookups find, the second one can be used itself and is known to nobody else. A module
/// that wants to know compares data() of what a lookup of the name gives with its own.
///
/// Registering is meant for static initialisers: it takes no lock, and must not happen while
/// another thread looks something up.
///
/// Modules share a registry when they see a specialisation of registeredValues() that one of them
/// exports, as FileTypes.h has it for file types; otherwise each may have its own.
template <typename T>
class ExtendableEnum
{
public:
    /// Keeps both, and registers a copy when no value of that name is.
    ///
    /// @param name  of static lifetime: a view is kept
    /// @param data  what belongs to the name
    ExtendableEnum(QLatin1StringView name, T data)
        : m_name(name)
        , m_data(std::move(data))
    {
        std::vector<ExtendableEnum> &values = registeredValues();
        if (std::find(values.begin(), values.end(), *this) == values.end())
            values.push_back(*this);
    }

    /// The name.
    QLatin1StringView name() const { return m_name; }
    /// What belongs to it.
    const T &data() const { return m_data; }

    /// True for the same name, whatever belongs to it.
    bool operator==(const ExtendableEnum &other) const { return m_name == other.m_name; }

    /// Copies of all values that were registered, in that order.
    static std::vector<ExtendableEnum> &registeredValues();

private:
    QLatin1StringView m_name;
    T m_data;
};

template <typename T>
std::vector<ExtendableEnum<T>> &ExtendableEnum<T>::registeredValues()
{
    static std::vector<ExtendableEnum> values;
    return values;
}

/// Refers to a value of an ExtendableEnum; one pointer, passed by value.
///
/// One made from a named constant stays valid for good. One that a lookup gave refers to the
/// registry's copy and must not be used any more once a further value has been registered, as
/// loading a plug-in may do: keep the name, or look it up again.
template <typename T>
class ExtendableEnumRef
{
public:
    /// Refers to @p value, which has to outlive this.
    ExtendableEnumRef(const ExtendableEnum<T> &value)
        : m_value(&value)
    {
    }

    /// The value.
    const ExtendableEnum<T> &operator*() const { return *m_value; }
    /// The value.
    const ExtendableEnum<T> *operator->() const { return m_value; }
    /// Its name.
    QLatin1StringView name() const { return m_value->name(); }
    /// What belongs to it.
    const T &data() const { return m_value->data(); }

    /// True for the same name.
    bool operator==(const ExtendableEnumRef &other) const { return *m_value == *other.m_value; }

private:
    const ExtendableEnum<T> *m_value;
};
