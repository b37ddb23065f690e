#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace vex::test {

/// All that a file holds; nothing where it cannot be read.
inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes the folder, too.
inline void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY2(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly),
        qPrintable(path + u' ' + file.errorString()));
    QCOMPARE(file.write(content), content.size());
}

} // namespace vex::test
