#include "output/NumberList.h"

#include "output/Output.h"

#include <utility>

namespace vexcli {

namespace {

constexpr qsizetype kPiece = 1 << 14; // bytes

} // namespace

NumberListWriter::NumberListWriter(Output *output, bool isJson)
    : m_output(output)
    , m_isJson(isJson)
    , m_text(isJson ? "[" : "")
{
}

void NumberListWriter::add(qint64 number)
{
    if (!std::exchange(m_isEmpty, false))
        m_text += ", ";
    m_text += QByteArray::number(number);
    if (m_text.size() >= kPiece)
        m_output->write(std::exchange(m_text, {}));
}

void NumberListWriter::end()
{
    m_output->write(std::exchange(m_text, {}) + (m_isJson ? "]\n" : "\n"));
}

} // namespace vexcli
