#include "platform/StoreLock.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace vex::detail {

bool isStoreLocked()
{
    constexpr int kLimit = 2000; // ms; the store has answered a moment ago
    QDBusMessage question = QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s,
        u"/org/freedesktop/secrets/aliases/default"_s, u"org.freedesktop.DBus.Properties"_s,
        u"Get"_s);
    question << u"org.freedesktop.Secret.Collection"_s << u"Locked"_s;
    question.setAutoStartService(false);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(question, QDBus::Block, kLimit);
    return answer.type() == QDBusMessage::ReplyMessage
        && answer.arguments().value(0).value<QDBusVariant>().variant().toBool();
}

} // namespace vex::detail
