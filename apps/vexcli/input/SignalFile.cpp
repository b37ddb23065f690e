#include "input/SignalFile.h"

#include "Background.h"
#include "Failure.h"
#include "input/NumberFile.h"
#include "output/Progress.h"

#include <QByteArrayView>
#include <QFile>
#include <QMap>
#include <QRegularExpression>

#include <vex/PlotUtilities.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF"; // editors on Windows begin UTF-8 with it
constexpr qsizetype kChunk = 1 << 20; // bytes read at a time
constexpr qsizetype kLongestLine = 1 << 16; // bytes
constexpr qsizetype kLongestQuote = 40; // characters of a bad field in a message
constexpr qsizetype kMostWarnings = 3; // about points that do not ascend
constexpr qsizetype kMostFindings = 1000; // places that are counted

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

QByteArrayView trimmed(QByteArrayView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

enum class Reading {
    Number,
    NoNumber,
    NotFinite,
    TooLarge
};

Reading readNumber(QByteArrayView field, double *value)
{
    field = trimmed(field);
    if (field.startsWith('+') && !field.startsWith("+-"))
        field = field.sliced(1);
    const char *const end = field.data() + field.size();
    const auto [stop, problem] = std::from_chars(field.data(), end, *value);
    if (stop != end || problem == std::errc::invalid_argument)
        return Reading::NoNumber;
    if (problem == std::errc::result_out_of_range) {
        // too close to 0 to be told from it, or too large
        *value = 0.0;
        return field.contains("e-") || field.contains("E-") ? Reading::Number : Reading::TooLarge;
    }
    return std::isfinite(*value) ? Reading::Number : Reading::NotFinite;
}

QString quoted(QByteArrayView field)
{
    QString text = QString::fromUtf8(trimmed(field));
    if (text.size() > kLongestQuote)
        text = text.left(kLongestQuote) + u'\u2026';
    return u'\'' + text + u'\'';
}

/// Takes the lines of a file in.
class Reader
{
public:
    explicit Reader(const QString &path)
        : m_path(path)
    {
    }

    /// @param line  without its end
    vex::Error take(QByteArrayView line)
    {
        if (++m_line == 1 && line.startsWith(kByteOrderMark))
            line = line.sliced(kByteOrderMark.size());
        if (m_separator == 0)
            return takeFirst(line);
        const auto *separator = static_cast<const char *>(
            line.isEmpty() ? nullptr : std::memchr(line.data(), m_separator, size_t(line.size())));
        QPointF point;
        if (separator && readNumber({line.data(), separator}, &point.rx()) == Reading::Number
            && readNumber({separator + 1, line.data() + line.size()}, &point.ry())
                == Reading::Number) {
            add(point);
            return vex::ErrorCode::NoError;
        }
        if (isPassedOver(line))
            return vex::ErrorCode::NoError;
        return problemOf(line);
    }

    vex::Error lineTooLong() const
    {
        return failure(
            u"%1, line %2: the line is too long"_s.arg(m_path, QString::number(m_line + 1)));
    }

    vex::Result<vex::PlotBase> finish() const
    {
        if (m_signal.points().isEmpty())
            return failure(u"%1 holds no point"_s.arg(m_path));
        return m_signal;
    }

    /// Where the points do not ascend, in words.
    QStringList findings() const
    {
        const auto found = vex::PlotUtilities::checkSignal(m_signal, kMostFindings);
        QStringList texts;
        for (const auto &finding : found.first(std::min(found.size(), kMostWarnings))) {
            const double x = m_signal.points()[finding.index].x();
            texts.append(u"%1, line %2: x %3 %4"_s.arg(m_path,
                QString::number(m_odd.value(finding.index)), QString::number(x, 'g', 12),
                finding.kind == vex::PlotUtilities::SignalFinding::Descending
                    ? u"is below the one before: what is computed from it means little"_s
                    : u"repeats the one before: only the first y counts there"_s));
        }
        if (found.size() > kMostWarnings)
            texts.append(u"%1: x does not ascend in %2%3 more places"_s.arg(m_path,
                found.size() < kMostFindings ? QString() : u"at least "_s,
                QString::number(found.size() - kMostWarnings)));
        return texts;
    }

private:
    void add(const QPointF &point)
    {
        auto &points = m_signal.points();
        if (m_odd.size() < kMostWarnings && !points.isEmpty() && point.x() <= points.back().x())
            m_odd.insert(points.size(), m_line);
        points.append(point);
    }

    static bool isPassedOver(QByteArrayView line)
    {
        line = trimmed(line);
        return line.isEmpty() || line.startsWith('#');
    }

    /// A line before the separator is known: it tells.
    vex::Error takeFirst(QByteArrayView line)
    {
        if (isPassedOver(line))
            return vex::ErrorCode::NoError;
        for (const char separator : {'\t', ';', ','}) {
            if (m_separator == 0 && line.contains(separator))
                m_separator = separator;
        }
        const QList<QByteArray> titles = line.toByteArray().split(m_separator);
        if (m_separator != 0 && titles.size() == 2
            && std::all_of(titles.begin(), titles.end(), [](const QByteArray &title) {
                   return isTitle(QString::fromUtf8(title).trimmed());
               }))
            return vex::ErrorCode::NoError;
        if (m_separator == 0)
            return problemOf(line);
        --m_line;
        return take(line);
    }

    /// What is wrong with a line that is no point.
    vex::Error problemOf(QByteArrayView line) const
    {
        const QString where = u"%1, line %2"_s.arg(m_path, QString::number(m_line));
        for (qsizetype i = 0; i < line.size(); ++i) {
            const auto code = static_cast<unsigned char>(line[i]);
            if (code < 0x20 && !isBlank(line[i]))
                return failure(u"%1, column %2: byte 0x%3 is no text"_s.arg(where,
                    QString::number(i + 1), u"%1"_s.arg(uint(code), 2, 16, QLatin1Char('0'))));
        }
        if (trimmed(line).contains('\r'))
            return failure(u"%1: a line that ends with CR alone, LF is needed"_s.arg(where));
        const QList<QByteArray> fields = m_separator == 0 ? QList<QByteArray>{line.toByteArray()}
                                                          : line.toByteArray().split(m_separator);
        if (fields.size() == 1)
            return failure(u"%1: expected x and y, separated by %2"_s.arg(where,
                m_separator == 0         ? u"a comma, a semicolon or a tab"_s
                    : m_separator == ',' ? u"a comma"_s
                    : m_separator == ';' ? u"a semicolon"_s
                                         : u"a tab"_s));
        if (fields.size() != 2)
            return failure(u"%1: expected 2 columns, x and y, found %2%3"_s.arg(where,
                QString::number(fields.size()),
                m_separator == ',' && fields.size() <= 4
                    ? u"; numbers take a decimal point, not a comma"_s
                    : QString()));
        for (qsizetype i = 0; i < fields.size(); ++i) {
            const QString what =
                u"%1: %2 %3"_s.arg(where, i == 0 ? u"x"_s : u"y"_s, quoted(fields[i]));
            double value = 0.0;
            switch (readNumber(fields[i], &value)) {
            case Reading::NotFinite:
                return failure(u"%1 is not finite"_s.arg(what));
            case Reading::TooLarge:
                return failure(u"%1 is out of range"_s.arg(what));
            case Reading::NoNumber: {
                static const QRegularExpression decimalComma(
                    u"^\\s*[-+]?\\d*,\\d+([eE].*)?\\s*$"_s);
                if (decimalComma.match(QString::fromUtf8(fields[i])).hasMatch())
                    return failure(u"%1 has a decimal comma: write a point"_s.arg(what));
                return failure(u"%1 is not a number"_s.arg(what));
            }
            case Reading::Number:
                break;
            }
        }
        return failure(u"%1: not understood"_s.arg(where));
    }

    QString m_path;
    vex::PlotBase m_signal;
    qint64 m_line = 0; // number of the last one taken
    char m_separator = 0; // not known yet
    QMap<qsizetype, qint64> m_odd; // lines of the first points that do not ascend
};

vex::Error readLines(const QString &path, Reader *reader)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
    std::optional<Progress> progress;
    if (!file.isSequential())
        progress.emplace(u"reading"_s, file.size());
    QByteArray buffer(kLongestLine + kChunk, Qt::Uninitialized);
    qsizetype held = 0; // bytes of a line that has not ended
    qint64 done = 0;
    for (;;) {
        const qint64 got = file.read(buffer.data() + held, kChunk);
        if (got < 0 || file.error() != QFileDevice::NoError)
            return failure(u"cannot read %1: %2"_s.arg(path, file.errorString()));
        const char *line = buffer.constData();
        const char *const end = line + held + got;
        while (line < end) {
            const auto *lineEnd =
                static_cast<const char *>(std::memchr(line, '\n', size_t(end - line)));
            if (!lineEnd && got > 0)
                break;
            if (auto error = reader->take({line, lineEnd ? lineEnd : end}); error.hasError())
                return error;
            line = lineEnd ? lineEnd + 1 : end;
        }
        if (got == 0)
            return vex::ErrorCode::NoError;
        held = end - line;
        if (held > kLongestLine)
            return reader->lineTooLong();
        std::memmove(buffer.data(), line, size_t(held));
        if (isInterrupted())
            return failure(u"interrupted, no file was written"_s);
        if (progress)
            progress->update(done += got);
    }
}

} // namespace

vex::Result<vex::PlotBase> readSignal(const QString &path)
{
    struct Work
    {
        Reader reader;
        vex::Error error = vex::ErrorCode::NoError;
        QStringList findings;
    };
    const auto work = std::make_shared<Work>(Work{Reader(path), vex::ErrorCode::NoError, {}});
    // A pipe may keep the reader waiting.
    const bool isDone = runInBackground([work, path] {
        try {
            work->error = readLines(path, &work->reader);
            if (!work->error.hasError())
                work->findings = work->reader.findings();
        } catch (const std::bad_alloc &) {
            work->error = failure(u"%1: there is not enough memory"_s.arg(path));
        }
    });
    if (!isDone)
        return failure(u"interrupted, no file was written"_s);
    if (work->error.hasError())
        return passedOn(work->error);
    for (const QString &finding : std::as_const(work->findings))
        qWarning("%s", qUtf8Printable(finding));
    return passedOn(work->reader.finish());
}

SignalRange rangeOf(const vex::PlotBase &signal)
{
    const auto [lowest, highest] = std::minmax_element(signal.points().begin(),
        signal.points().end(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    return {lowest->x(), highest->x()};
}

void addTimeUnitOption(CommandLine *commandLine)
{
    commandLine->addOption({u"x-unit"_s},
        u"Unit of the x column, and so of what is printed: minutes (default) or seconds."_s,
        u"UNIT"_s);
}

vex::Result<TimeUnit> timeUnitFrom(const CommandLine &commandLine)
{
    const QString name = commandLine.value(u"x-unit"_s);
    if (name == "minutes"_L1 || !commandLine.isSet(u"x-unit"_s))
        return TimeUnit{u"min"_s, 1.0};
    if (name == "seconds"_L1)
        return TimeUnit{u"s"_s, 60.0};
    return usageFailure(u"--x-unit '%1' is neither minutes nor seconds"_s.arg(name));
}

} // namespace vexcli
