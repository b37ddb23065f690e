#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstdint>

#include <vex/ExceptionPointers.h>

namespace vexcli {

// For the report of a crash: the memory of the process may be damaged. Nothing here allocates, but
// for what is called before.

/// A name of the system's, made before a crash.
QByteArray preparedPath(const QString &path);

/// What is written is out at once. Only the user may read it.
class ReportFile
{
public:
    /// Creates a file @p name in the folder, and the folder where it is missing. What is there
    /// stays: it fails then.
    /// @param folder  from preparedPath()
    /// @return why it failed, as far as the system has a word for that; null when it has not failed
    const char *create(const QByteArray &folder, const char *name);
    /// Appends @p text, unless something failed before.
    void write(QByteArrayView text);
    /// Why not all has been written, as above; null when it has.
    const char *problem() const { return m_problem; }

private:
    std::intptr_t m_file = -1;
    const char *m_problem = nullptr;
};

/// Writes to standard error, past all that is buffered.
void writeError(QByteArrayView text);

/// "SIGSEGV at address 0x0000000000000000: address not mapped"
QByteArrayView crashDescription(const EXCEPTION_POINTERS *pointers);

/// Number of this process.
std::uint64_t processNumber();

} // namespace vexcli
