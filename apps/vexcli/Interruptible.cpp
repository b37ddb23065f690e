#include "Interruptible.h"

#include "Failure.h"
#include "output/Progress.h"

#include <chrono>
#include <future>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr std::chrono::milliseconds kInterruptEvery(50); // between two looks for Ctrl-C
constexpr std::chrono::milliseconds kGrace(200); // to end by itself after Ctrl-C

/// Looks for Ctrl-C, in a thread, for as long as it exists.
class Watch
{
public:
    explicit Watch(const std::function<void()> &leave)
        : m_thread([leave, end = m_end.get_future()] {
            while (end.wait_for(kInterruptEvery) != std::future_status::ready) {
                if (isInterrupted() && end.wait_for(kGrace) != std::future_status::ready)
                    leave();
            }
        })
    {
    }
    ~Watch()
    {
        m_end.set_value();
        m_thread.join();
    }
    Q_DISABLE_COPY_MOVE(Watch)

private:
    std::promise<void> m_end;
    std::thread m_thread;
};

} // namespace

vex::Error runInterruptibly(
    const std::function<vex::Error()> &work, const std::function<void()> &leave)
{
    try {
        if (!leave)
            return work();
        const Watch watch(leave);
        return work();
    } catch (const std::bad_alloc &) {
    } catch (const std::length_error &) { // a container beyond every address
    } catch (const std::system_error &) { // no room for a thread
    }
    return failure(u"there is not enough memory"_s);
}

} // namespace vexcli
