#include "input/Input.h"

#include "Failure.h"
#include "output/Messages.h"
#include "output/Text.h"
#include "platform/Files.h"

#include <cstring>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF"; // editors on Windows begin UTF-8 with it
constexpr qint64 kChunk = 1 << 20; // bytes read at a time
constexpr qint64 kLongestLine = 1 << 16; // bytes
constexpr qsizetype kLongestQuote = 40; // characters
constexpr QIODevice::OpenMode kMode = QIODevice::ReadOnly | QIODevice::Unbuffered;
constexpr int kStandardInput = 0; // descriptor

} // namespace

QString inputName(const QString &path)
{
    return path == "-"_L1 ? u"standard input"_s : path;
}

vex::Result<std::shared_ptr<Input>> Input::open(const QString &path)
{
    auto input = std::make_shared<Input>();
    input->m_name = inputName(path);
    QFile &file = input->m_file;
    file.setFileName(path);
    if (!(path == "-"_L1 ? file.open(kStandardInput, kMode) : file.open(kMode)))
        return failure(u"cannot read %1: %2"_s.arg(input->m_name, file.errorString()));
    if (file.isSequential())
        input->m_descriptor = path == "-"_L1 ? kStandardInput : file.handle();
    input->m_progress =
        std::make_unique<Progress>(u"reading"_s, file.isSequential() ? 0 : file.size());
    return input;
}

vex::Result<qint64> Input::read(char *data, qint64 most)
{
    if (isInterrupted())
        return interrupted();
    QString problem;
    qint64 got = 0;
    if (m_descriptor >= 0) {
        got = readSome(m_descriptor, data, most, &problem);
    } else {
        got = m_file.read(data, most);
        if (got < 0 || m_file.error() != QFileDevice::NoError)
            problem = m_file.errorString();
    }
    if (!problem.isEmpty())
        return failure(u"cannot read %1: %2"_s.arg(m_name, problem));
    m_progress->update(m_done += got);
    return got;
}

vex::Error forEachLine(Input *input,
    const std::function<vex::Error(QByteArrayView line, qint64 number)> &take,
    const std::function<void()> &beforeRead)
{
    QByteArray buffer(kLongestLine + kChunk, Qt::Uninitialized);
    qint64 held = 0; // bytes of a line that has not ended
    qint64 number = 0;
    for (;;) {
        if (beforeRead)
            beforeRead();
        auto got = input->read(buffer.data() + held, kChunk);
        if (got.hasError())
            return passedOn(std::move(got).error());
        const bool isEnd = got.value() == 0;
        const char *line = buffer.constData();
        const char *const end = line + held + got.value();
        const auto find = [end](const char *from, char character) {
            const auto *found =
                static_cast<const char *>(std::memchr(from, character, size_t(end - from)));
            return found ? found : end;
        };
        const char *feed = find(line, '\n');
        while (line < end) {
            if (feed < line)
                feed = find(line, '\n');
            const auto *stop =
                static_cast<const char *>(std::memchr(line, '\r', size_t(feed - line)));
            if (!stop)
                stop = feed;
            const bool isReturn = stop < end && *stop == '\r';
            if (!isEnd && (stop == end || (isReturn && stop + 1 == end)))
                break; // more of the line, or the LF behind a CR, may follow
            QByteArrayView text(line, stop);
            if (++number == 1 && text.startsWith(kByteOrderMark))
                text = text.sliced(kByteOrderMark.size());
            if (text.size() > kLongestLine)
                return failure(u"%1, line %2: the line is too long"_s.arg(
                    input->name(), QString::number(number)));
            if (auto error = take(text, number); error.hasError())
                return error;
            line = stop + (isReturn && stop + 1 < end && stop[1] == '\n' ? 2 : 1);
        }
        if (isEnd)
            return vex::ErrorCode::NoError;
        held = end - line;
        if (held > kLongestLine)
            return failure(u"%1, line %2: the line is too long"_s.arg(
                input->name(), QString::number(number + 1)));
        std::memmove(buffer.data(), line, size_t(held));
    }
}

QString quoted(QByteArrayView field)
{
    QString text = QString::fromUtf8(field).trimmed();
    if (text.size() > kLongestQuote)
        text = text.left(kLongestQuote) + u'\u2026';
    return u'\'' + text + u'\'';
}

vex::Error BadRecords::leaveOut(vex::Error problem)
{
    if (!m_keepsGoing)
        return passedOn(std::move(problem));
    warn(problem.message() + ", left out"_L1);
    ++m_count;
    return vex::ErrorCode::NoError;
}

vex::Error BadRecords::verdict() const
{
    if (m_count == 0)
        return vex::ErrorCode::NoError;
    return failure(u"%1 left out, see above"_s.arg(
        counted(m_count, u"bad record"_s) + (m_count == 1 ? " was"_L1 : " were"_L1)));
}

} // namespace vexcli
