#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

#include <vex_common_stable/Export.h>
#include <vex_common_stable/Result.h>

namespace vex {

/// Parses JSON.
class VEX_COMMON_STABLE_EXPORT JsonUtils
{
public:
    /// @p json (UTF-8) as an array.
    ///
    /// @par Errors  InvalidInput: the line and the column, in bytes and from 1, where the text
    /// stops
    ///              to be JSON, and why; or that it holds an object instead
    static Result<QJsonArray> arrayFromJson(const QByteArray &json);

    /// @p json (UTF-8) as an object.
    ///
    /// @par Errors  as arrayFromJson()
    static Result<QJsonObject> objectFromJson(const QByteArray &json);
};

} // namespace vex
