#pragma once

#include <QList>
#include <QString>

#include <functional>

#include <vex/Export.h>

namespace vex {

/// What FileUtilsGeneric::moveDirectory() did, step by step.
///
/// Taken from the last to the first, the steps bring files, folders and links back to where they
/// were: what was renamed is renamed back, what was created is removed, what was copied is deleted,
/// and what was deleted is made again before that, a link as a link, a file from its copy. What a
/// copy does not keep, such as the owner, and the permissions of deleted folders stay lost;
/// docs/reliability.md has the list.
class VEX_EXPORT MoveReport
{
public:
    /// One change, or one thing that has not been changed.
    struct Step
    {
        /// What happened.
        enum Kind {
            Renamed, ///< a folder with everything in it, from source to destination
            Created, ///< a folder at the destination, empty; source is empty for those above it
            Copied, ///< a file, also by way of a link, whole; its source is still there
            Deleted, ///< a file, a link or a folder at the source; the copy of a file is complete
            LeftBehind, ///< still at the source when the move ended, for whatever reason
        };

        Kind kind = Renamed; ///< what happened
        bool isFolder = false; ///< also a link to one, but not when it is left behind
        QString source; ///< path at the source
        QString destination; ///< path at the destination; empty where nothing is there
        qint64 bytes = 0; ///< content of the file, or of all files below a renamed folder
        QString reason; ///< why something was left behind, as far as that is known
        QString link; ///< what a symbolic link at the source holds; empty where it is none

        /// True when all agree.
        bool operator==(const Step &) const = default;
    };

    /// All steps in the order in which they were taken, what was left behind last.
    QList<Step> steps;

    /// The sum over the steps of one kind.
    qint64 bytes(Step::Kind kind) const;
    /// The number of steps of one kind.
    qsizetype count(Step::Kind kind) const;
};

/// How far a move has come.
struct MoveProgress
{
    QString path; ///< what is going to be moved, at the source; empty at the end
    qint64 bytesDone = 0; ///< size of the files behind us
    qint64 bytesTotal = 0; ///< size of all visible files, taken before the first one was moved
    qsizetype filesDone = 0; ///< files behind us
    qsizetype filesTotal = 0; ///< number of all visible files, taken before the first one was moved
};

/// Gets to know how far a move has come; false ends the move.
using MoveProgressCallback = std::function<bool(const MoveProgress &)>;

} // namespace vex
