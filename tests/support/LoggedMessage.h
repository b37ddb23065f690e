#pragma once

#include <QMessageLogger>
#include <QString>

#include <utility>

namespace vex::test {

/// The last message that @p run logs as "type file:line function: text"; none of them is shown.
template <typename Run>
QString loggedBy(Run run)
{
    static QString last;
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext &at, const QString &text) {
            last = QString::asprintf("%d %s:%d %s: ", type, at.file, at.line, at.function) + text;
        });
    run();
    qInstallMessageHandler(before);
    return std::exchange(last, QString());
}

} // namespace vex::test
