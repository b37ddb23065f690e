#pragma once

#include <QList>
#include <QString>

#include <functional>

#include <vex/Export.h>

namespace vex {

/// What FileUtilsGeneric::moveDirectory() did, step by step.
///
/// The steps are enough to undo a move: taken from the last to the first, what was renamed is
/// renamed back, what was created is removed, what was copied is deleted, and what was deleted is
/// copied back before that.
class VEX_EXPORT MoveReport
{
public:
    /// One change, or one thing that has not been changed.
    struct Step
    {
        /// What happened.
        enum Kind {
            Renamed, ///< a folder with everything in it, from source to destination
            Created, ///< a folder at the destination, empty; folders made above it are not told
            Copied, ///< a file, whole; its source is still there
            Deleted, ///< a file or a folder at the source; the copy of a file is complete
            LeftBehind, ///< still at the source when the move ended, for whatever reason
        };

        Kind kind = Renamed; ///< what happened
        bool isFolder = false; ///< a symbolic link to a folder is none when it is left behind
        QString source; ///< path at the source
        QString destination; ///< path at the destination; empty where nothing is there
        qint64 bytes = 0; ///< content of the file, or of all files below a renamed folder
        QString reason; ///< why something was left behind, as far as that is known

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
