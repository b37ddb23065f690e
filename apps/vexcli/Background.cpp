#include "Background.h"

#include "Failure.h"
#include "output/Progress.h"

#include <vex/CrashHandler.h>

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

} // namespace

BackgroundResult runInBackground(const std::function<vex::Error()> &work, bool endsItself)
{
    try {
        std::packaged_task<vex::Error()> task(work);
        auto result = task.get_future();
        std::thread thread([task = std::move(task)]() mutable {
            CrashHandler::prepareThread();
            task();
        });
        while (result.wait_for(kInterruptEvery) != std::future_status::ready) {
            if (isInterrupted() && !endsItself
                && result.wait_for(kGrace) != std::future_status::ready) {
                thread.detach();
                return {interrupted(), true};
            }
        }
        thread.join();
        return {result.get(), false};
    } catch (const std::bad_alloc &) {
    } catch (const std::length_error &) { // a container beyond every address
    } catch (const std::system_error &) { // no room for a thread
    }
    return {failure(u"there is not enough memory"_s), false};
}

} // namespace vexcli
