#pragma once

#include <QMessageLogger>
#include <QString>

namespace vex::test {

/// A message and the place that it names.
struct LoggedMessage
{
    QtMsgType type = QtFatalMsg;
    QString text;
    QString file;
    int line = 0;
    QString function;
};

/// The last message that @p run logs; none of them is shown.
template <typename Run>
LoggedMessage loggedBy(Run run)
{
    static LoggedMessage last;
    last = {};
    const QtMessageHandler before = qInstallMessageHandler([](QtMsgType type,
                                                               const QMessageLogContext &at,
                                                               const QString &text) {
        last = {type, text, QString::fromUtf8(at.file), at.line, QString::fromUtf8(at.function)};
    });
    run();
    qInstallMessageHandler(before);
    return last;
}

} // namespace vex::test
