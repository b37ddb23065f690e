#pragma once

#include <QString>

#include <vex/Error.h>
#include <vex/Export.h>

class QSettings;

namespace vex {

/// Base of the settings of an application: they say what their values are and where they lie, this
/// class opens, reads and writes the file. Files are INI.
///
/// examples/settings.cpp is a whole one; docs/settings.md tells what happens when saving fails.
class VEX_EXPORT SettingsInterface
{
public:
    /// Reads the values from defaultFilePath(). A file that is missing reads as an empty one;
    /// nothing is reported.
    void load();

    /// Writes the values to defaultFilePath(), beside those that the file holds already. Where the
    /// user may not write, an administrator is asked for consent (FileCopierUtils), and the file
    /// then holds these values and no other.
    ///
    /// Deliberate: a file that may be written, but could not be, is a success; saveChecked() tells.
    /// @par Errors  those of FileCopierUtils::runFileCopier(); and FileAccessError when there is no
    ///              room for the temporary file that is copied
    Error save() const;

    /// save() that reports whatever goes wrong, and looks at the file afterwards.
    ///
    /// The old file stays until the new one is whole and on the disk. Values that the file holds
    /// and this object does not write are kept, also where an administrator has to consent.
    /// @par Errors  FileAccessError with the path and what the system said: "Cannot read ...",
    ///              "Cannot write ...", "... is no settings file" (it stays as it is), "... is
    ///              locked by another program", "... does not hold what was written"; and those of
    ///              FileCopierUtils::runFileCopier()
    Error saveChecked() const;

    /// Nothing is read: load() does that.
    SettingsInterface() = default;
    /// Nothing is kept here, so nothing is copied.
    SettingsInterface(const SettingsInterface &) = default;
    /// The same.
    SettingsInterface(SettingsInterface &&) = default;
    /// The same.
    SettingsInterface &operator=(const SettingsInterface &) = default;
    /// The same.
    SettingsInterface &operator=(SettingsInterface &&) = default;

    /// Deliberate: always true. Derived classes compare their values.
    bool operator==(const SettingsInterface &) const { return true; }

protected:
    /// Writes every value into @p settings.
    virtual void writeSettings(QSettings &settings) const = 0;
    /// Reads every value from @p settings.
    virtual void readSettings(QSettings &settings) = 0;
    /// The file of load() and save().
    virtual QString defaultFilePath() const = 0;

    // not virtual, so nobody deletes settings through this class
    ~SettingsInterface() = default;

    /// load() from another file.
    void load(const QString &path);
    /// save() to another file.
    Error save(const QString &path) const;
    /// saveChecked() to another file.
    Error saveChecked(const QString &path) const;
    /// The part of save() for files that the user may not write: always asks for consent.
    Error elevatePrivilegesAndSave(const QString &path) const;
};

} // namespace vex
