#include "CopyRequest.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <exception>

namespace copier {

namespace {

/// When @p argument is the option @p name: takes its value from behind "=" or from the next
/// argument, and is true.
bool takeOption(const char *name, const std::vector<Text> &arguments, std::size_t *index,
    std::filesystem::path *value, bool *isRight)
{
    const std::string ascii(name);
    const Text option(ascii.begin(), ascii.end());
    Text argument = arguments[*index];
    if (argument == option && *index + 1 < arguments.size())
        argument += Text(1, '=') + arguments[++*index];
    if (argument.compare(0, option.size() + 1, option + Text(1, '=')) != 0)
        return false;
    *isRight = *isRight && value->empty(); // a second one would have to win over the first
    *value = argument.substr(option.size() + 1);
    *isRight = *isRight && value->is_absolute();
    return true;
}

} // namespace

Outcome parse(const std::vector<Text> &arguments, CopyRequest *request)
{
    bool isRight = true;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        isRight =
            (takeOption("--source", arguments, &i, &request->source, &isRight)
                || takeOption("--destination", arguments, &i, &request->destination, &isRight))
            && isRight;
    if (isRight && !request->source.empty() && !request->destination.empty())
        return {};
    return {BadParameters,
        "usage: Vex-File-Copier --source=FILE --destination=FILE, both absolute paths, each once"};
}

int run(const std::vector<Text> &arguments)
{
    Outcome outcome;
    try { // out of memory: nothing stays behind, and the code is not that of abort()
        CopyRequest request;
        outcome = parse(arguments, &request);
        if (outcome.code == Copied)
            outcome = copy(request);
    } catch (const std::exception &exception) {
        outcome = {Failed, exception.what()};
    }
    const auto isControl = [](unsigned char byte) { return std::iscntrl(byte) != 0; };
    std::replace_if(outcome.reason.begin(), outcome.reason.end(), isControl, '?');
    if (outcome.code != Copied)
        std::fprintf(stderr, "Vex-File-Copier: %s\n", outcome.reason.c_str());
    return outcome.code;
}

} // namespace copier
