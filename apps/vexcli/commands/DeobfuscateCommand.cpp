#include "commands/Command.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "input/NumberList.h"
#include "input/Secret.h"
#include "output/Messages.h"
#include "output/NumberList.h"
#include "output/Output.h"
#include "output/Text.h"

#include <vex/Obfuscator.h>

#include <QList>

#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

/// Decodes a list number by number, and holds a piece of it at a time.
class Decoder
{
public:
    explicit Decoder(std::function<void(const QByteArray &plain)> take)
        : m_take(std::move(take))
    {
    }

    vex::Error add(int element, qint64 position)
    {
        if (element <= position)
            return failure(
                u"standard input: element %1 is %2, at least %3 is possible (counted from 0)"_s.arg(
                    QString::number(position), QString::number(element),
                    QString::number(position + 1)));
        if (element > position + 256 && m_tooLarge++ == 0)
            m_firstTooLarge = position;
        // an element grows with its position, so those of a later piece by what is before it
        m_piece.append(static_cast<int>(element - m_done));
        return m_piece.size() < kPiece ? vex::ErrorCode::NoError : passedOn(handOn());
    }
    vex::Error end()
    {
        if (m_tooLarge > 0)
            warn(
                u"%1 too large for a byte, the first is element %2 (counted from 0); what is above 255 counts modulo 256"_s
                    .arg(counted(m_tooLarge, u"element"_s)
                            + (m_tooLarge == 1 ? " is"_L1 : " are"_L1),
                        QString::number(m_firstTooLarge)));
        return passedOn(handOn());
    }

private:
    static constexpr qsizetype kPiece = 10000; // elements

    vex::Error handOn()
    {
        const auto plain = vex::Obfuscator::deObfuscate(m_piece);
        if (plain.hasError())
            return passedOn(plain.error());
        m_done += m_piece.size();
        m_piece.clear();
        m_take(plain.value());
        return vex::ErrorCode::NoError;
    }

    std::function<void(const QByteArray &plain)> m_take;
    QList<int> m_piece;
    qint64 m_done = 0; // elements before it
    qint64 m_tooLarge = 0; // elements
    qint64 m_firstTooLarge = 0;
};

vex::Error decode(const std::function<void(const QByteArray &plain)> &take)
{
    Decoder decoder(take);
    NumberListReader reader(
        [&decoder](int number, qint64 position) { return decoder.add(number, position); });
    const auto add = [&reader](QByteArrayView piece) { return reader.add(piece); };
    if (auto error = readSecret(u"the list"_s, false, add); error.hasError())
        return passedOn(std::move(error));
    if (auto error = reader.end(); error.hasError())
        return passedOn(std::move(error));
    return passedOn(decoder.end());
}

void declare(CommandLine *commandLine)
{
    commandLine->describe(
        u"Turns a list of numbers from standard input back into the secret that it stands for."_s,
        {u"vex deobfuscate"_s, u"vex deobfuscate -o key.bin < list.txt"_s},
        u"Commas, blanks and line ends separate the numbers; brackets around all of them, as JSON "
        "has them, may be there. The bytes are written as they are, without a line end behind "
        "them; with --json they are an array of numbers, 0 to 255.\n"
        "At a terminal the list is one line and is not shown while you type.\n"
        "Element N, counted from 0, is at least N + 1; less is an error. More than N + 256 is no "
        "byte: it counts modulo 256, with a warning.\n"
        "There are no arguments, since other users of the machine can see them."_s);
    commandLine->refusePositional(
        u"the list is no argument, which others can see: deobfuscate reads it from standard input"_s);
    commandLine->addOutputOption(u"Writes the bytes to FILE instead of printing them."_s);
}

vex::Error run(const CommandLine &commandLine, Results *results)
{
    Output *output = results->file() ? results->file() : results->standard();
    if (!commandLine.isJson())
        return passedOn(decode([output](const QByteArray &plain) { output->write(plain); }));
    NumberListWriter list(output, true);
    if (auto error = decode([&list](const QByteArray &plain) {
            for (const char byte : plain)
                list.add(static_cast<unsigned char>(byte));
        });
        error.hasError())
        return passedOn(std::move(error));
    list.end();
    return vex::ErrorCode::NoError;
}

} // namespace

const Command kDeobfuscateCommand{
    "deobfuscate"_L1, "the secret that a list of numbers stands for"_L1, declare, run, false};

} // namespace vexcli
