#include <QTest>

#include <vex/InternalVersion.h>

#include <windows.h>
// after windows.h, which it does not include itself
#include <dbghelp.h>

/// What a crash report rests on: the system finds the names and lines of the library's functions.
class TestSymbolNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void functionsHaveNameAndLine()
    {
        const HANDLE process = GetCurrentProcess();
        SymSetOptions(SYMOPT_UNDNAME | SYMOPT_LOAD_LINES);
        const QByteArray folder = QCoreApplication::applicationDirPath().toLocal8Bit();
        QVERIFY(SymInitialize(process, folder.constData(), TRUE));
        const auto place = reinterpret_cast<DWORD64>(&vex::appInternalVersion);

        alignas(SYMBOL_INFO) char space[sizeof(SYMBOL_INFO) + MAX_SYM_NAME] = {};
        auto *symbol = reinterpret_cast<SYMBOL_INFO *>(space);
        symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
        symbol->MaxNameLen = MAX_SYM_NAME;
        DWORD64 offset = 0;
        QVERIFY(SymFromAddr(process, place, &offset, symbol));
        QVERIFY2(QByteArray(symbol->Name).contains("appInternalVersion"), symbol->Name);

        IMAGEHLP_LINE64 line = {};
        line.SizeOfStruct = sizeof(line);
        DWORD column = 0;
        QVERIFY(SymGetLineFromAddr64(process, place, &column, &line));
        QVERIFY2(QByteArray(line.FileName).endsWith("InternalVersion.cpp"), line.FileName);
        SymCleanup(process);
    }
};

QTEST_GUILESS_MAIN(TestSymbolNames)
#include "tst_SymbolNames_win.moc"
