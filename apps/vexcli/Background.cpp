#include "Background.h"

#include "Failure.h"
#include "output/Progress.h"

#include <chrono>
#include <exception>
#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

using namespace Qt::StringLiterals;

namespace vexcli {

namespace {

constexpr std::chrono::milliseconds kInterruptEvery(50); // between two looks for Ctrl-C
constexpr std::chrono::milliseconds kGrace(200); // to end by itself after Ctrl-C

vex::Error noMemory()
{
    return failure(u"there is not enough memory"_s);
}

} // namespace

BackgroundResult runInBackground(const std::function<vex::Error()> &work, bool endsItself)
{
    try {
        std::packaged_task<vex::Error()> task([work]() -> vex::Error {
            try {
                return work();
            } catch (const std::bad_alloc &) {
            } catch (const std::length_error &) { // a container beyond every address
            }
            return noMemory();
        });
        auto result = task.get_future();
        std::thread thread(std::move(task));
        while (result.wait_for(kInterruptEvery) != std::future_status::ready) {
            if (isInterrupted() && !endsItself
                && result.wait_for(kGrace) != std::future_status::ready) {
                thread.detach();
                return {interrupted(), true};
            }
        }
        thread.join();
        return {result.get(), false};
    } catch (const std::exception &) { // not even memory for a thread
        return {noMemory(), false};
    }
}

} // namespace vexcli
