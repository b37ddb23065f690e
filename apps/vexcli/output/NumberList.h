#pragma once

#include <QByteArray>

namespace vexcli {

class Output;

/// Writes a list of numbers that may be longer than memory: "66, 67" in a line, or [66, 67] as
/// JSON.
class NumberListWriter
{
public:
    NumberListWriter(Output *output, bool isJson);
    void add(qint64 number);
    /// Ends the list.
    void end();

private:
    Output *m_output;
    bool m_isJson;
    bool m_isEmpty = true;
    QByteArray m_text; // not handed on yet: an output is locked for each text that it gets
};

} // namespace vexcli
