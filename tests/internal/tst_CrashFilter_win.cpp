#include "platform/CrashFilter.h"
#include "platform/StackWalk.h"

#include <QTest>

#include <csignal>

#include <windows.h>

using namespace vex::detail;

namespace {

LONG WINAPI filterBefore(EXCEPTION_POINTERS *)
{
    return 7;
}
LONG WINAPI filterOnTop(EXCEPTION_POINTERS *)
{
    return 0;
}
void abortBefore(int) { }
void abortOnTop(int) { }

Backtrace backtrace;
void nameStack(EXCEPTION_POINTERS *pointers)
{
    collectFrames(pointers, &backtrace);
    nameFrames(&backtrace);
    demangleNames(&backtrace);
}

void putsBack(bool isFilterOnTop, bool isAbortOnTop)
{
    SetUnhandledExceptionFilter(filterBefore);
    std::signal(SIGABRT, abortBefore);
    installCrashFilter({});
    const auto ours = SetUnhandledExceptionFilter(filterOnTop);
    if (!isFilterOnTop)
        SetUnhandledExceptionFilter(ours);
    if (isAbortOnTop)
        std::signal(SIGABRT, abortOnTop);
    restoreCrashFilter();
    QVERIFY(ours != filterBefore);
    EXCEPTION_POINTERS pointers = {};
    QCOMPARE(ours(&pointers), 7); // what is on top may go on calling it
    QVERIFY(SetUnhandledExceptionFilter({}) == (isFilterOnTop ? filterOnTop : filterBefore));
    QVERIFY(std::signal(SIGABRT, SIG_DFL) == (isAbortOnTop ? abortOnTop : abortBefore));
}

/// The first caller that a walk from @p function comes to; 0 for none.
DWORD64 callerOf(DWORD64 function, DWORD64 caller, DWORD64 *stackPointer = nullptr)
{
    std::array<DWORD64, 64> stack = {caller};
    CONTEXT context = {};
    context.Rip = function;
    context.Rsp = reinterpret_cast<DWORD64>(stackPointer ? stackPointer : stack.data());
    EXCEPTION_POINTERS pointers = {nullptr, &context};
    nameStack(&pointers);
    const Frame &first = backtrace.frames[0];
    const bool isFirst = first.address == function && first.module.isEmpty();
    return isFirst && backtrace.count > 1 ? backtrace.frames[1].address : 0;
}

} // namespace

class TestCrashFilter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatWasThereComesBack()
    {
        for (int i = 0; i < 4 && !QTest::currentTestFailed(); ++i)
            putsBack(i > 1, i % 2 == 1);
    }

    void wildPointersEndTheWalk()
    {
        const auto code = reinterpret_cast<DWORD64>(&nameStack);
        constexpr DWORD64 kWild = 0x1234567800;
        QCOMPARE(callerOf(0, code), code);
        QCOMPARE(callerOf(kWild, code), code);
        QCOMPARE(callerOf(0, kWild), DWORD64{0});
        QCOMPARE(callerOf(0, code, reinterpret_cast<DWORD64 *>(16)), DWORD64{0});
        QCOMPARE(backtrace.count.load(), std::size_t{1});
    }
};

QTEST_GUILESS_MAIN(TestCrashFilter)
#include "tst_CrashFilter_win.moc"
