#pragma once

#include <QElapsedTimer>
#include <QString>

namespace vexcli {

/// A progress bar on standard error: on a terminal only, and only for work that takes a while.
class Progress
{
public:
    /// @param label  what is being done
    /// @param total  steps of the whole work, in any unit; not known when 0 or below
    Progress(const QString &label, qint64 total);
    /// Takes the bar off the screen.
    ~Progress();
    Q_DISABLE_COPY_MOVE(Progress)

    /// Shows that @p done of the steps are behind us; cheap enough for every step.
    void update(qint64 done);

private:
    QString m_label;
    qint64 m_total;
    bool m_isShown = false;
    bool m_isEnabled;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceDrawn;
};

/// Makes Ctrl-C and a request to end set a flag instead of ending the process at once.
void catchInterrupts();

/// True once the work is to stop and to leave nothing half-written: the user pressed Ctrl-C, or
/// stopWork() was called.
bool isInterrupted();

/// Has the work stopped because its result would reach nobody.
void stopWork();

} // namespace vexcli
