#include "Harness.h"

#include <benchmark/benchmark.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

/// Processor time of one run of a program, its output thrown away; negative when it fails.
double timeOfRun(const std::vector<std::string> &command)
{
    std::vector<char *> words;
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int problem = posix_spawn(&child, words[0], &files, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (problem != 0)
        return -1.0;
    int status = 0;
    rusage used = {};
    while (wait4(child, &status, 0, &used) < 0) {
        if (errno != EINTR)
            return -1.0;
    }
    return status == 0 ? seconds(used.ru_utime) + seconds(used.ru_stime) : -1.0;
}

void add(const std::string &name, std::vector<std::string> command)
{
    // beside this program
    command[0] = std::filesystem::read_symlink("/proc/self/exe").parent_path() / command[0];
    benchmark::RegisterBenchmark(name.c_str(), [command](benchmark::State &state) {
        for (auto _ : state) {
            const double time = timeOfRun(command);
            if (time < 0.0) {
                state.SkipWithError((command[0] + " failed").c_str());
                break;
            }
            state.SetIterationTime(time);
        }
    })->UseManualTime();
}

const bench::Registration added([] {
    const std::string empty = "start-up/empty program";
    add(empty, {"vex-empty"});
    struct Start
    {
        std::vector<std::string> arguments;
        double most; // times as long as the empty program
    };
    const Start starts[] = {{{"--version"}, 1.2}, {{"pattern", "--mass", "1000"}, 1.4}};
    for (const Start &start : starts) {
        std::vector<std::string> command{"vex"};
        std::string name = "start-up/vex";
        for (const std::string &argument : start.arguments) {
            command.push_back(argument);
            name += ' ' + argument;
        }
        add(name, command);
        bench::compare({name, empty, name, 1.0 / start.most});
    }
});

} // namespace
