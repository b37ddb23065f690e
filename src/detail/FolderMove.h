#pragma once

#include <QHash>
#include <QString>

#include <vex/Error.h>
#include <vex/MoveReport.h>

namespace vex::detail {

/// One run of FileUtilsGeneric::moveDirectory().
class FolderMove
{
public:
    /// Either may be null or empty. The report is replaced by run().
    FolderMove(MoveReport *report, const MoveProgressCallback &progress);

    /// Moves the folder.
    Error run(const QString &source, const QString &destination, bool removeSource);

private:
    /// Why something stayed, and where its copy is, if there is one.
    struct Kept
    {
        QString copy;
        QString reason;
    };

    Error moveFolder(const QString &source, const QString &destination, bool removeSource);
    Error moveFile(const QString &source, const QString &destination, bool removeSource);
    bool renameFolder(const QString &source, const QString &destination);
    Error makeFolder(const QString &source, const QString &destination);

    void note(const MoveReport::Step &step);
    void noteLeftBehind();
    /// False when the move is to end before @p source is moved.
    bool goesOn(const QString &source);

    QString m_source; // cleaned
    MoveReport *m_report;
    const MoveProgressCallback &m_progress;
    MoveProgress m_state;
    bool m_isMeasured = false; // m_state knows the totals
    QHash<QString, Kept> m_kept; // by path at the source
};

} // namespace vex::detail
