#include <vex/AppParamsPrinter.h>

#include "detail/LoggingCategories.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vex {

namespace {

const QLoggingCategory *const generic = detail::genericCategory();

QString quoted(const QString &text)
{
    constexpr QStringView kNeedQuotes = u" \\/";
    const bool isPlain = std::none_of(
        text.begin(), text.end(), [&](QChar character) { return kNeedQuotes.contains(character); });
    return isPlain ? text : u"\"%1\""_s.arg(text);
}

QString assigned(const QString &name, const QString &value)
{
    return u"%1=%2"_s.arg(name, quoted(value));
}

/// Deliberate: in any case, while the form with a parser compares letter for letter.
bool isLeftOut(const QString &argument, const QList<QString> &leftOut)
{
    const auto isNamed = [&leftOut](QStringView name) {
        return std::any_of(leftOut.begin(), leftOut.end(),
            [name](const QString &left) { return name.compare(left, Qt::CaseInsensitive) == 0; });
    };
    if (argument.startsWith("--"_L1))
        return isNamed(QStringView(argument).sliced(2));
    return argument.size() == 2 && argument.startsWith(u'-') && isNamed(argument.last(1));
}

template <typename Parameters>
void print(const Parameters &parameters, const QList<QString> &leftOut)
{
    if (generic->isDebugEnabled())
        qCDebug(*generic).noquote().nospace()
            << "Application arguments:\n"
            << AppParamsPrinter::printableAppParams(parameters, leftOut).join(u' ');
}

} // namespace

QList<QString> AppParamsPrinter::printableAppParams(
    const QCommandLineParser &parser, const QList<QString> &leftOut)
{
    QList<QString> items{QFileInfo(QCoreApplication::applicationFilePath()).fileName()};
    for (const QString &argument : parser.positionalArguments())
        items.append(quoted(argument));
    const QStringList known = parser.optionNames();
    const QStringList names = known + parser.unknownOptionNames();
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QString &name = names[i];
        if (leftOut.contains(name))
            continue;
        const QString option = (name.size() == 1 ? u"-%1"_s : u"--%1"_s).arg(name);
        // a parser has no value of an unknown option, and would warn of the question
        const QString value = i < known.size() ? parser.value(name) : QString();
        items.append(value.isEmpty() ? option : assigned(option, value));
    }
    return items;
}

QList<QString> AppParamsPrinter::printableAppParams(
    const QCoreApplication &, const QList<QString> &leftOut)
{
    const QStringList arguments = QCoreApplication::arguments();
    QList<QString> items{QFileInfo(arguments.value(0)).fileName()};
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        const qsizetype equals = argument.startsWith(u'-') ? argument.indexOf(u'=') : -1;
        const QString key = argument.first(equals < 0 ? argument.size() : equals);
        if (isLeftOut(key, leftOut))
            i += equals < 0 ? 1 : 0; // with the value that stands behind it
        else
            items.append(
                equals < 0 ? quoted(argument) : assigned(key, argument.sliced(equals + 1)));
    }
    return items;
}

void AppParamsPrinter::printAppParams(
    const QCommandLineParser &parser, const QList<QString> &leftOut)
{
    print(parser, leftOut);
}

void AppParamsPrinter::printAppParams(
    const QCoreApplication &application, const QList<QString> &leftOut)
{
    print(application, leftOut);
}

} // namespace vex
