#include "input/Secret.h"

#include "Failure.h"
#include "input/Input.h"
#include "platform/Terminal.h"

#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr qint64 kPiece = 1 << 16; // bytes read at a time
constexpr qsizetype kLongestTyped = 4094; // bytes; Linux cuts a line off behind the next one

vex::Result<QByteArray> typedLine(const QString &what, HiddenInput *input)
{
    std::fprintf(stderr, "vex: type %s in one line; %s\n", qUtf8Printable(what),
        input->state() == HiddenInput::Hidden ? "it is not shown"
                                              : "IT WILL BE SEEN while you type");
    auto line = input->readLine();
    if (line.hasError())
        return passedOn(std::move(line).error());
    if (line.value().size() > kLongestTyped)
        return failure(u"the terminal may have cut the line off; a file or a pipe can hold it"_s);
    return line;
}

/// The length of what may be the line end of all at the end of @p bytes.
qint64 lineEndOf(QByteArrayView bytes)
{
    return bytes.endsWith("\r\n") ? 2 : bytes.endsWith('\n') || bytes.endsWith('\r') ? 1 : 0;
}

} // namespace

vex::Error readSecret(const QString &what, bool dropsLineEnd,
    const std::function<vex::Error(QByteArrayView piece)> &take)
{
    if (HiddenInput typed; typed.state() != HiddenInput::NoTerminal) {
        auto line = typedLine(what, &typed);
        return line.hasError() ? passedOn(std::move(line).error()) : passedOn(take(line.value()));
    }
    auto input = Input::open(u"-"_s);
    if (input.hasError())
        return passedOn(std::move(input).error());
    QByteArray buffer(kPiece + 2, Qt::Uninitialized);
    qint64 held = 0; // bytes at its beginning that may be the line end of all
    for (;;) {
        auto got = input.value()->read(buffer.data() + held, kPiece);
        if (got.hasError())
            return passedOn(std::move(got).error());
        QByteArrayView bytes(buffer.constData(), held + got.value());
        if (got.value() == 0)
            return bytes.endsWith('\n') ? vex::ErrorCode::NoError : passedOn(take(bytes));
        held = dropsLineEnd ? lineEndOf(bytes) : 0;
        if (auto error = take(bytes.chopped(held)); error.hasError())
            return passedOn(std::move(error));
        std::memmove(buffer.data(), bytes.end() - held, size_t(held));
    }
}

} // namespace vexcli
