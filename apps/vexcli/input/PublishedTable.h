#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vex/Result.h>

#include "input/MassFile.h"

namespace vexcli {

class CommandLine;

/// The masses of --published, by name.
class PublishedTable
{
public:
    static void addOption(CommandLine *commandLine);

    /// Reads the file of the option; empty without it.
    static vex::Result<PublishedTable> fromOptions(const CommandLine &commandLine);

    /// Warns of those that are not among @p names.
    void warnOfOthers(const QStringList &names) const;

    /// @p mass in daltons as text, and how far it is from what was published for @p name, if
    /// anything.
    QString averageText(const QString &name, double mass) const;
    QString monoisotopicText(const QString &name, double mass) const;

private:
    QString textOf(const QString &name, double mass, double PublishedMasses::*published) const;

    QHash<QString, PublishedMasses> m_masses;
};

} // namespace vexcli
