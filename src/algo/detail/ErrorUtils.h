#pragma once

#include <vex/Error.h>

#include "detail/Trace.h"

#include <QDebug>
#include <QList>

namespace vex {

// Trace sites of the checks. The numbers are part of the interface: never renumber.
namespace detail::checkedAt {
inline constexpr TraceSource kErrorUtils{"src/algo/ErrorUtils"};
inline constexpr auto containerEmpty = kErrorUtils.line(82);
inline constexpr auto indexOutside = kErrorUtils.line(120);
inline constexpr TraceSource kListModel{"src/algo/AveragineIsotopeModelRefactored"};
inline constexpr auto capacityExceeded = kListModel.line(64);
inline constexpr auto sizesDiffer = kListModel.line(78);
} // namespace detail::checkedAt

namespace ErrorUtils {

/// No error when @p container holds anything; otherwise @p error, stamped.
template <typename Container>
Error emptyCheckReturn(const Container &container, Error error)
{
    if (!container.isEmpty())
        return ErrorCode::NoError;
    return detail::stamped(detail::checkedAt::containerEmpty, Q_FUNC_INFO, std::move(error));
}

/// No error when 0 <= @p index < size; otherwise @p error, stamped.
template <typename Container>
Error indexInRange(const Container &container, int index, Error error)
{
    if (index >= 0 && index < container.size())
        return ErrorCode::NoError;
    return detail::stamped(detail::checkedAt::indexOutside, Q_FUNC_INFO, std::move(error));
}

} // namespace ErrorUtils

/// No error when both lists are equally long; otherwise a warning in the log and @p error, stamped.
template <typename List>
Error notSameSizeReturn(const List &first, const List &second, Error error)
{
    if (first.size() == second.size())
        return ErrorCode::NoError;
    // Deliberate: one text for all lists.
    qWarning("Different sized isotopic mass and abundance vectors.");
    return detail::stamped(detail::checkedAt::sizesDiffer, Q_FUNC_INFO, std::move(error));
}

/// No error for at most @p bound values in @p list; else GeneralFailure and a critical log line.
///
/// Deliberate: a check of capacity in spite of its name. The bound is the largest number of values
/// that the loop to follow may touch; a shorter list passes. The size counts as 32-bit integer.
inline Error checkOutOfBounds(const QList<double> &list, const int bound)
{
    const auto size = static_cast<qint32>(list.size());
    if (size >= 0 && size <= bound)
        return ErrorCode::NoError;
    qCritical("Convolution index out of bounds..");
    return detail::stamped(
        detail::checkedAt::capacityExceeded, Q_FUNC_INFO, Error(ErrorCode::GeneralFailure));
}

} // namespace vex
