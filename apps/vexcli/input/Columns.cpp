#include "input/Columns.h"

#include "Failure.h"
#include "commands/CommandLine.h"
#include "output/Text.h"

#include <QByteArrayView>
#include <QRegularExpression>
#include <QVarLengthArray>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr QByteArrayView kSeparators = "\t;,"; // the strongest first
constexpr qsizetype kMostTitleLines = 100; // more are no head of a table

using Fields = QVarLengthArray<QByteArrayView, 16>;
using Places = QVarLengthArray<qsizetype, 16>;

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

bool isControl(char character)
{
    return static_cast<unsigned char>(character) < 0x20 && !isBlank(character);
}

QByteArrayView trimmed(QByteArrayView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

bool isQuoted(QByteArrayView field)
{
    return field.size() >= 2 && field.front() == '"' && field.back() == '"';
}

/// Where a separator stands in @p line outside of quotes. A quote begins a field, and a quote that
/// does not end holds the rest.
template <typename IsSeparator>
Places separatorsIn(QByteArrayView line, IsSeparator isSeparator)
{
    Places places;
    bool isInQuotes = false;
    bool isAtStart = true; // of a field
    for (qsizetype i = 0; i < line.size(); ++i) {
        const char character = line[i];
        if (character == '"' && isInQuotes && i + 1 < line.size() && line[i + 1] == '"') {
            ++i; // one quote of the text, written as two
        } else if (character == '"' && (isInQuotes || isAtStart)) {
            isInQuotes = !isInQuotes;
            isAtStart = false;
        } else if (!isInQuotes && isSeparator(character)) {
            places.append(i);
            isAtStart = true;
        } else {
            isAtStart = isAtStart && isBlank(character);
        }
    }
    return places;
}

/// The fields of @p line, trimmed, still in their quotes.
/// @param separator  0 for none
Fields split(QByteArrayView line, char separator)
{
    Fields fields;
    qsizetype start = 0;
    const auto isSeparator = [separator](char c) { return c == separator && separator != 0; };
    for (const qsizetype place : separatorsIn(line, isSeparator)) {
        fields.append(trimmed(line.sliced(start, place - start)));
        start = place + 1;
    }
    fields.append(trimmed(line.sliced(start)));
    return fields;
}

QByteArrayView withoutQuotes(QByteArrayView field)
{
    return isQuoted(field) ? field.sliced(1).chopped(1) : field;
}

QString textOf(QByteArrayView field)
{
    if (!isQuoted(field))
        return QString::fromUtf8(field);
    return QString::fromUtf8(withoutQuotes(field)).replace("\"\""_L1, "\""_L1);
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

/// True for "1,234" and the like: 1.234, or 1234 in groups.
bool maybeGroups(QByteArrayView number)
{
    static const QRegularExpression groups(u"^[-+]?[1-9]\\d{0,2},\\d{3}$"_s);
    return groups.match(QString::fromLatin1(number)).hasMatch();
}

/// True for the title of a column: words, which may hold digits. A mistyped number must not pass as
/// one and get lost.
bool isTitle(const QString &field)
{
    const auto letters = std::count_if(
        field.begin(), field.end(), [](QChar character) { return character.isLetter(); });
    const auto digits = std::count_if(
        field.begin(), field.end(), [](QChar character) { return character.isDigit(); });
    QString meant = field; // what a slip of the pen may have made letters of
    for (const auto &[wrong, right] : {std::pair(u'O', u'0'), {u'o', u'0'}, {u'l', u'1'},
             {u'I', u'1'}, {u'S', u'5'}, {u'B', u'8'}, {u',', u'.'}})
        meant.replace(wrong, right);
    bool isNumber = false;
    meant.toDouble(&isNumber); // nan and inf are
    const bool startsAsNumber =
        !field.isEmpty() && (field[0].isDigit() || u"+-.,"_s.contains(field[0]));
    return letters > 0 && !isNumber && (!startsAsNumber || (letters >= 3 && letters > digits));
}

QString separatorName(char separator)
{
    return separator == ',' ? u"a comma"_s
        : separator == ';'  ? u"a semicolon"_s
        : separator == '\t' ? u"a tab"_s
                            : u"a comma, a semicolon or a tab"_s;
}

struct TitleLine
{
    QByteArray text;
    qint64 number;
    char separator; // the strongest in it
};

/// Takes the lines of a file in.
class Reader
{
public:
    Reader(const ColumnsRequest &request, const QString &name, BadRecords *bad,
        const std::function<vex::Error(const ColumnsRow &)> &take)
        : m_request(request)
        , m_name(name)
        , m_bad(bad)
        , m_take(take)
        , m_columns(request.names.size())
        , m_numbers(m_columns)
    {
        m_isSimple = m_columns == 2 && !request.isFirstText && request.choice.isEmpty();
    }

    vex::Error take(QByteArrayView line, qint64 number)
    {
        m_line = number;
        if (m_isSimple && m_separator != 0 && takeFast(line))
            return m_take({{}, m_numbers.constData(), number});
        const QByteArrayView text = trimmed(line);
        if (text.isEmpty() || text.startsWith('#'))
            return vex::ErrorCode::NoError;
        auto error = m_hasRow ? takeRow(line) : takeFirst(line);
        return error.hasError() && !m_isFatal ? m_bad->leaveOut(std::move(error)) : error;
    }

    vex::Result<QStringList> finish() const
    {
        if (!m_hasRow && m_titleLines.size() > 1)
            return failure(u"%1 holds no numbers; %2 look like titles"_s.arg(
                m_name, counted(m_titleLines.size(), u"line"_s)));
        if (m_commaLine > 0 && !m_isCommaSure)
            return failure(u"%1, line %2: %3 may be a decimal comma or a group of thousands; every "
                           "comma in the file may: --decimal comma or --decimal point tells"_s.arg(
                               m_name, QString::number(m_commaLine), m_commaField));
        return m_titles;
    }

private:
    QString where() const { return u"%1, line %2"_s.arg(m_name, QString::number(m_line)); }

    /// Two plain numbers, the usual case.
    bool takeFast(QByteArrayView line)
    {
        const auto *separator = static_cast<const char *>(
            line.isEmpty() ? nullptr : std::memchr(line.data(), m_separator, size_t(line.size())));
        if (!separator || m_commaLine > 0)
            return false;
        return readNumber({line.data(), separator}, &m_numbers[0]) == Reading::Number
            && readNumber({separator + 1, line.data() + line.size()}, &m_numbers[1])
            == Reading::Number
            && notePoint(line);
    }

    bool notePoint(QByteArrayView line)
    {
        if (m_pointLine == 0 && line.contains('.'))
            m_pointLine = m_line;
        return true;
    }

    /// A line before the first row is known: a title, or the row that tells how to read the others.
    vex::Error takeFirst(QByteArrayView line)
    {
        const char separator = separatorOf(line);
        auto problem = tryRow(line, separator);
        if (m_hasRow || m_isFatal)
            return problem;
        const bool mayBeSingle = separator == ',' && m_columns == 1 && m_request.choice.isEmpty();
        if (mayBeSingle) { // with a decimal comma
            problem = tryRow(line, 0);
            if (m_hasRow || m_isFatal)
                return problem;
        }
        if (isTitles(line, separator) && m_titleLines.size() < kMostTitleLines) {
            m_titleLines.append({line.toByteArray(), m_line, separator});
            return vex::ErrorCode::NoError;
        }
        return problemOf(line, separator);
    }

    /// The strongest separator in @p line, 0 for none. A weaker one would cut numbers apart.
    static char separatorOf(QByteArrayView line)
    {
        qsizetype strongest = kSeparators.size();
        for (const qsizetype place :
            separatorsIn(line, [](char c) { return kSeparators.contains(c); }))
            strongest = std::min(strongest, kSeparators.indexOf(line[place]));
        return strongest < kSeparators.size() ? kSeparators[strongest] : '\0';
    }

    /// True when the wanted fields of @p line are titles; all fields where they are not known yet.
    bool isTitles(QByteArrayView line, char separator)
    {
        if (std::any_of(line.begin(), line.end(), isControl))
            return false;
        const Fields fields = split(line, separator);
        Fields judged = fields;
        if (!m_request.choice.isEmpty() && !choose(fields, separator).hasError()) {
            judged.clear();
            for (const qsizetype place : std::as_const(m_places))
                judged.append(fields[place]);
        }
        return std::all_of(judged.begin(), judged.end(),
            [](QByteArrayView field) { return field.isEmpty() || isTitle(textOf(field)); });
    }

    /// Takes @p line as the first row, with @p separator.
    vex::Error tryRow(QByteArrayView line, char separator)
    {
        const Fields fields = split(line, separator);
        const bool hasTwoReadings = isRowOfTitles(line, separator); // chooses places of its own
        if (auto error = choose(fields, separator); error.hasError())
            return error;
        if (auto error = readRow(fields, separator); error.hasError())
            return error;
        if (hasTwoReadings)
            return fatal(severalReadings(
                m_line, separator, m_titleLines.last().separator, m_titleLines.last().number));
        m_separator = separator;
        m_fieldCount = fields.size();
        m_hasRow = true;
        for (const TitleLine &titles : std::as_const(m_titleLines)) {
            const Fields texts = split(titles.text, separator);
            if (texts.size() < m_fieldCount)
                continue;
            if (texts.size() == m_fieldCount && hasNumbers(texts))
                return fatal(severalReadings(titles.number, titles.separator, separator, m_line));
            for (qsizetype i = 0; i < m_columns; ++i) {
                if (m_titles.size() <= i)
                    m_titles.append(QString());
                m_titles[i] = (m_titles[i] + u' ' + textOf(texts[m_places[i]])).trimmed();
            }
        }
        return m_take({m_text, m_numbers.constData(), m_line});
    }

    /// True when each of the wanted fields that is to be a number is one, with a point or a comma.
    bool hasNumbers(const Fields &fields) const
    {
        return std::all_of(m_places.begin() + (m_request.isFirstText ? 1 : 0), m_places.end(),
            [&fields](qsizetype place) {
                double ignored = 0.0;
                const QByteArrayView text = trimmed(withoutQuotes(fields[place]));
                return readNumber(text.toByteArray().replace(',', '.'), &ignored)
                    != Reading::NoNumber;
            });
    }

    /// True when @p line is a row with the separator of the titles above it, another than @p
    /// separator.
    bool isRowOfTitles(QByteArrayView line, char separator)
    {
        if (m_titleLines.isEmpty())
            return false;
        const TitleLine &titles = m_titleLines.last();
        const Fields fields = split(line, titles.separator);
        return titles.separator != 0 && titles.separator != separator
            && fields.size() == split(titles.text, titles.separator).size()
            && !choose(fields, titles.separator).hasError() && hasNumbers(fields);
    }

    vex::Error severalReadings(qint64 line, char separator, char other, qint64 otherLine) const
    {
        return failure(
            u"%1, line %2: it can be read with %3 as separator and, as line %4, with %5; "
            "a field that holds either belongs in quotes"_s.arg(m_name, QString::number(line),
                separatorName(separator), QString::number(otherLine), separatorName(other)));
    }

    /// Finds the places of the wanted columns.
    vex::Error choose(const Fields &fields, char separator)
    {
        m_places.clear();
        if (m_request.choice.isEmpty()) {
            for (qsizetype i = 0; i < m_columns; ++i)
                m_places.append(i);
            const bool isTrailed = fields.size() == m_columns + 1 && fields.last().isEmpty();
            return fields.size() == m_columns || isTrailed ? vex::Error(vex::ErrorCode::NoError)
                                                           : wrongCount(fields, separator);
        }
        const QStringList wanted = m_request.choice.split(u',');
        if (wanted.size() != m_columns)
            return fatal(usageFailure(u"--column '%1' names %2; wanted: %3"_s.arg(m_request.choice,
                counted(wanted.size(), u"column"_s), m_request.names.join(u','))));
        for (const QString &column : wanted) {
            const qsizetype place = placeOf(column.trimmed(), separator);
            if (place < 0)
                return failure(u"%1: there is no column '%2'%3"_s.arg(
                    where(), column.trimmed(), titlesFound(separator)));
            if (place >= fields.size())
                return failure(u"%1: there is no column %2, the line has %3"_s.arg(
                    where(), QString::number(place + 1), QString::number(fields.size())));
            m_places.append(place);
        }
        return vex::ErrorCode::NoError;
    }

    qsizetype placeOf(const QString &column, char separator) const
    {
        bool isNumber = false;
        const qsizetype number = column.toLongLong(&isNumber);
        if (isNumber)
            return number - 1;
        for (const TitleLine &titles : m_titleLines) {
            const Fields texts = split(titles.text, separator);
            for (qsizetype i = 0; i < texts.size(); ++i) {
                if (textOf(texts[i]).compare(column, Qt::CaseInsensitive) == 0)
                    return i;
            }
        }
        return -1;
    }

    QString titlesFound(char separator) const
    {
        if (m_titleLines.isEmpty())
            return u", for there are no titles"_s;
        QStringList titles;
        for (const QByteArrayView field : split(m_titleLines.last().text, separator))
            titles.append(textOf(field));
        return u"; there are: %1"_s.arg(titles.join(", "_L1));
    }

    vex::Error takeRow(QByteArrayView line)
    {
        const Fields fields = split(line, m_separator);
        if (fields.size() != m_fieldCount)
            return wrongCount(fields, m_separator);
        if (auto error = readRow(fields, m_separator); error.hasError())
            return error;
        return m_take({m_text, m_numbers.constData(), m_line});
    }

    vex::Error readRow(const Fields &fields, char separator)
    {
        for (qsizetype i = 0; i < m_columns; ++i) {
            const QByteArrayView field = fields[m_places[i]];
            if (i == 0 && m_request.isFirstText) {
                m_text = textOf(field);
                continue;
            }
            if (auto error = readField(field, separator, i); error.hasError())
                return error;
        }
        return vex::ErrorCode::NoError;
    }

    vex::Error readField(QByteArrayView field, char separator, qsizetype column)
    {
        const bool hasQuotes = isQuoted(field);
        const QByteArrayView text = trimmed(withoutQuotes(field));
        const bool hasPoint = text.contains('.');
        const bool hasComma = text.contains(',') && (separator != ',' || hasQuotes);
        const auto problem = [&](const char16_t *what) {
            return failure(u"%1: %2 %3 %4"_s.arg(
                where(), m_request.names[column], quoted(text), QStringView(what).toString()));
        };
        if (hasComma && m_request.decimal == "point"_L1)
            return problem(u"has a comma");
        if (hasComma && hasPoint)
            return problem(u"has both a comma and a point");
        const Reading reading = hasComma
            ? readNumber(text.toByteArray().replace(',', '.'), &m_numbers[column])
            : readNumber(text, &m_numbers[column]);
        switch (reading) {
        case Reading::NotFinite:
            return problem(u"is not finite");
        case Reading::TooLarge:
            return problem(u"is out of range");
        case Reading::NoNumber:
            return problem(u"is not a number");
        case Reading::Number:
            break;
        }
        if (hasComma && separator == 0 && m_request.decimal.isEmpty())
            return fatal(problem(u"may be one number with a decimal comma, or two columns: "
                                 "--decimal comma or --column tells"));
        if (hasPoint && m_pointLine == 0)
            m_pointLine = m_line;
        if (hasComma && m_commaLine == 0) {
            m_commaLine = m_line;
            m_commaField = quoted(text);
        }
        if (hasComma && (m_request.decimal == "comma"_L1 || !maybeGroups(text)))
            m_isCommaSure = true;
        if (m_commaLine > 0 && m_pointLine > 0)
            return fatal(failure(u"%1: the numbers have decimal commas in line %2 and points in "
                                 "line %3"_s.arg(m_name, QString::number(m_commaLine),
                                     QString::number(m_pointLine))));
        return vex::ErrorCode::NoError;
    }

    vex::Error wrongCount(const Fields &fields, char separator) const
    {
        if (fields.size() == 1)
            return failure(u"%1: expected %2, separated by %3"_s.arg(
                where(), m_request.names.join(" and "_L1), separatorName(separator)));
        const qsizetype expected = m_hasRow ? m_fieldCount : m_columns;
        QString hint;
        if (!m_hasRow && m_request.choice.isEmpty())
            hint = u"; --column tells which"_s;
        if (separator == ',' && expected < fields.size() && fields.size() <= 2 * expected)
            hint += u"; between commas a number takes a decimal point"_s;
        return failure(
            u"%1: expected %2 (%3), found %4%5"_s.arg(where(), counted(expected, u"column"_s),
                m_request.names.join(", "_L1), QString::number(fields.size()), hint));
    }

    /// What is wrong with a line that is neither a title nor a row.
    vex::Error problemOf(QByteArrayView line, char separator)
    {
        const auto *control = std::find_if(line.begin(), line.end(), isControl);
        if (control != line.end())
            return failure(u"%1, column %2: byte 0x%3 is no text"_s.arg(where(),
                QString::number(control - line.begin() + 1),
                u"%1"_s.arg(uint(*control), 2, 16, QLatin1Char('0'))));
        const Fields fields = split(line, separator);
        if (auto error = choose(fields, separator); error.hasError())
            return error;
        auto error = readRow(fields, separator);
        return error.hasError() ? error : failure(u"%1: not understood"_s.arg(where()));
    }

    /// @p error, which leaving the line out would not mend.
    vex::Error fatal(vex::Error error)
    {
        m_isFatal = true;
        return error;
    }

    const ColumnsRequest &m_request;
    QString m_name;
    BadRecords *m_bad;
    const std::function<vex::Error(const ColumnsRow &)> &m_take;
    qsizetype m_columns;
    QList<double> m_numbers;
    QString m_text;
    bool m_isSimple;
    bool m_isFatal = false;
    bool m_hasRow = false;
    qint64 m_line = 0;
    char m_separator = 0;
    qsizetype m_fieldCount = 0; // of every row
    QList<qsizetype> m_places; // of the wanted columns
    QList<TitleLine> m_titleLines;
    QStringList m_titles; // of the wanted columns
    qint64 m_pointLine = 0; // the first with a decimal point
    qint64 m_commaLine = 0; // the first with a decimal comma
    QString m_commaField;
    bool m_isCommaSure = false; // no group of thousands
};

} // namespace

void addColumnsOptions(CommandLine *commandLine, const QString &names)
{
    commandLine->addOption({u"column"_s},
        u"Which columns of a file to take, as numbers from 1 or as titles: %1."_s.arg(names),
        u"COLUMNS"_s);
    commandLine->addOption({u"decimal"_s},
        u"Whether numbers have a decimal point or a decimal comma (default: found out)."_s,
        u"point|comma"_s);
}

ColumnsRequest columnsRequest(
    const CommandLine &commandLine, const QString &path, const QStringList &names)
{
    return {
        path, names, false, commandLine.value(u"column"_s), commandLine.value(u"decimal"_s), {}};
}

vex::Result<QStringList> readColumns(const ColumnsRequest &request, BadRecords *bad,
    const std::function<vex::Error(const ColumnsRow &row)> &take)
{
    if (!QStringList{QString(), u"point"_s, u"comma"_s}.contains(request.decimal))
        return usageFailure(u"--decimal '%1' is neither point nor comma"_s.arg(request.decimal));
    auto input = Input::open(request.path);
    if (input.hasError())
        return passedOn(std::move(input).error());
    Reader reader(request, input.value()->name(), bad, take);
    auto error = forEachLine(
        input.value().get(),
        [&reader](QByteArrayView line, qint64 number) { return reader.take(line, number); },
        request.beforeRead);
    if (error.hasError())
        return passedOn(std::move(error));
    return passedOn(reader.finish());
}

} // namespace vexcli
