#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

namespace vexcli {

class Output;

/// @p object as indented text. Characters that cannot be seen are escaped, all of them.
QByteArray jsonText(const QJsonObject &object);

/// Writes an array of objects one by one: the whole of it may be larger than memory.
class JsonArrayWriter
{
public:
    /// @param output  gets the array; null to write nothing
    explicit JsonArrayWriter(Output *output);
    void add(const QJsonObject &object);
    /// Ends the array.
    void end();

private:
    Output *m_output;
    bool m_isEmpty = true;
};

} // namespace vexcli
