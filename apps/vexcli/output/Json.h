#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>

namespace vexcli {

class Output;

/// @p object as indented text. Characters that cannot be seen are escaped, all of them.
QByteArray jsonText(const QJsonObject &object);

/// Writes objects one by one: the whole of them may be larger than memory.
class JsonArrayWriter
{
public:
    enum Layout {
        Array, ///< one array, indented
        Lines ///< a line for each object, and nothing around them
    };

    /// @param output  gets the objects; null to write nothing
    explicit JsonArrayWriter(Output *output, Layout layout = Array);
    void add(const QJsonObject &object);
    /// Ends the array.
    void end();

private:
    Output *m_output;
    Layout m_layout;
    bool m_isEmpty = true;
};

} // namespace vexcli
