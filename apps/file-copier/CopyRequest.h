#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace copier {

/// What the caller takes for the reason of a failure.
enum ExitCode {
    Copied = 0,
    BadParameters = 1,
    SourceNotReadable = 2,
    DestinationNotWritable = 3,
    Failed = 4,
};

/// How it ended, and why.
struct Outcome
{
    ExitCode code = Copied;
    std::string reason; ///< for people; empty when the file was copied
};

/// A text as the system hands it over.
using Text = std::filesystem::path::string_type;

/// What the command line asks for.
struct CopyRequest
{
    std::filesystem::path source;
    std::filesystem::path destination;
};

/// Takes the command line apart: both options, each once, as "--name=value" or "--name value", with
/// an absolute path each, and nothing else.
Outcome parse(const std::vector<Text> &arguments, CopyRequest *request);

/// Copies the file; at any time the destination is the old one or the new one, and on failure the
/// old one. What the platform has to say about who may do that is in its own source.
Outcome copy(const CopyRequest &request);

/// Does what the arguments behind the program's name ask for, and tells why if it cannot.
/// @return the exit code
int run(const std::vector<Text> &arguments);

} // namespace copier
