#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include <vex/Error.h>
#include <vex/MoveReport.h>

namespace vex::detail {

/// One run of FileUtilsGeneric::moveDirectory().
class FolderMove
{
public:
    /// @param function  the signature that the traces of errors name
    /// @param report    may be null; replaced by run()
    /// @param progress  may be empty
    FolderMove(const char *function, MoveReport *report, const MoveProgressCallback &progress);

    /// Moves the folder.
    Error run(const QString &source, const QString &destination, bool removeSource);

private:
    /// Why something stayed, and where its copy is, if there is one.
    struct Kept
    {
        QString copy;
        QString reason;
    };

    /// @param places  the identities of the folders above the destination; none when not known
    Error moveFolder(const QString &source, const QString &destination, bool removeSource,
        QStringList places = {});
    Error moveFile(const QString &source, const QString &destination, bool removeSource);
    bool renameFolder(const QString &source, const QString &destination);
    /// @return why there is no such folder; empty when there is one
    QString makeFolder(
        const QString &source, const QString &destination, const QStringList &places);

    void note(const MoveReport::Step &step);
    void noteLeftBehind();
    /// False when the move is to end before @p source is moved.
    bool goesOn(const QString &source);

    const char *m_function;
    QString m_source; // cleaned
    MoveReport *m_report;
    const MoveProgressCallback &m_progress;
    MoveProgress m_state;
    bool m_isMeasured = false; // m_state knows the totals
    QHash<QString, Kept> m_kept; // by path at the source
    QSet<QString> m_entered; // the identities of folders
};

} // namespace vex::detail
