#include <vex/KeychainUtils.h>

#include <QCoreApplication>

#include <cstdio>

// Asks for a secret where there is no store: prints what QtKeychain says, once it has been found
// and loaded.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QString text;
    QString said;
    const QKeychain::Error error =
        vex::KeychainUtils::readFromKeychain(QStringLiteral("vex-test/missing"), &text, &said);
    std::printf("keychain: %d %s\n", static_cast<int>(error), said.toUtf8().constData());
    return error == QKeychain::NoBackendAvailable ? 1 : 0;
}
