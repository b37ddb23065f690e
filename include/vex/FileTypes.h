#pragma once

#include <QList>
#include <QString>

#include <vex/Export.h>
#include <vex/ExtendableEnum.h>

/// The file types of the suite, known by their suffixes.
///
/// The constants register themselves when the library is loaded, in the order in which they stand
/// here; that order decides when two types share a suffix. Other modules may add types, see
/// ExtendableEnum.
class VEX_EXPORT FileTypes
{
public:
    /// What belongs to a file type.
    struct FileTypeData
    {
        QList<QString> suffixes; ///< without the point; the first is the one that is written
    };

    /// A file type.
    using Type = ExtendableEnum<FileTypeData>;
    /// Refers to a file type.
    using TypeRef = ExtendableEnumRef<FileTypeData>;

    /// What becomes of a suffix that types have registered.
    struct VEX_EXPORT SuffixEntry
    {
        QString suffix; ///< as registered
        QList<QString> types; ///< names of the types that list it, each once, in registry order
        QString winner; ///< name of the type that suffixToType() gives for it
        bool isMatchable = false; ///< false: no name of a file has it, as lookups read names
    };

    // NOLINTBEGIN(readability-identifier-naming): names given by the interface
    static const Type Invalid; ///< no known type; a file without a suffix matches it
    static const Type JPG; ///< picture
    static const Type PDF; ///< document
    static const Type PNG; ///< picture
    static const Type WMF; ///< picture
    static const Type INTABIO; ///< trace
    static const Type CSV; ///< table, also a trace
    static const Type PI; ///< trace
    static const Type JSON; ///< structured data
    static const Type HTML; ///< document
    static const Type BATCHTASK; ///< batch of tasks
    static const Type MGF; ///< spectra
    static const Type INI; ///< settings
    static const Type ALLFILES; ///< every file, in file dialogs
    static const Type TEXT; ///< text, also a trace
    static const Type QURSLT; ///< results
    static const Type FASTA; ///< sequences
    static const Type SEGMENTS; ///< segments
    static const Type
        REPORT_MODULE_RPTC_BACKWARD; ///< report module, with the suffix of old versions
    static const Type
        REPORT_MODULE_TABC_BACKWARD; ///< report module, with the suffix of old versions
    static const Type REPORT_MODULE_LOAD_EXTENSIONS; ///< all that report modules are loaded from
    static const Type REPORT_MODULE_RPTC; ///< report module
    static const Type REPORT_MODULE_TABC; ///< report module
    static const Type REPORT_MODULE_POSTPIVOT_COLUMNS; ///< report module
    static const Type REPORT_MODULE_PREPIVOT_COLUMNS; ///< report module
    static const Type REPORT_MODULE_PROTEIN_3D_SCRIPT_FILES; ///< report module; no file matches,
                                                             ///< see fileMatchesAnyType()
    static const Type EXE; ///< program
    static const Type BMP; ///< picture
    static const Type DAT; ///< data
    static const Type PRV; ///< preview
    static const Type SVG; ///< picture
    static const Type DATABASE; ///< database
    static const Type EXCELREPORT; ///< report
    static const Type SQLLITE; ///< database
    static const Type PDB; ///< protein structure
    static const Type PSE; ///< session of a structure viewer
    static const Type JAVASCRIPT; ///< script
    static const Type CFT; ///< configuration
    static const Type DMP; ///< crash dump
    static const Type PACQ; ///< acquisition
    static const Type ZIP; ///< archive
    static const Type GIF; ///< picture
    static const Type ARW; ///< trace
    static const Type TEMPLATEEDITORSCRIPT; ///< script
    static const Type THERMO_CSV; ///< table
    static const Type TSV; ///< table
    // NOLINTEND(readability-identifier-naming)

    /// The type's name.
    static QString typeToString(TypeRef type);

    /// The type of that name, letter for letter; Invalid for an unknown one.
    static TypeRef stringToType(const QString &name);

    /// The registered type that lists @p suffix in lower case: of several the one with the fewest
    /// suffixes, of those the one that was registered first; Invalid when none does. Upper and
    /// lower case of @p suffix are the same.
    static TypeRef suffixToType(const QString &suffix);

    /// Every suffix in the registry once, in the order of registration, with all its types and the
    /// one that wins.
    ///
    /// A suffix with a letter in upper case, a point or a separator is one that no file can match.
    /// A type whose name was taken is not registered, and so is not here; see ExtendableEnum.
    static QList<SuffixEntry> suffixTable();

    /// suffixToType() of what stands behind the last point of the file's name.
    static TypeRef fileToType(const QString &file);

    /// The type's suffixes.
    static QList<QString> fileSuffixesForExtensionType(TypeRef type);

    /// The type's first suffix; empty when it has none.
    static QString fileSuffixFromExtensionType(TypeRef type);

    /// The suffixes of all types, one after the other, repeated ones too.
    static QList<QString> fileSuffixesFromExtensionTypes(const QList<TypeRef> &types);

    /// The same for names of types; an unknown one gives one null string.
    static QList<QString> fileSuffixesFromExtensionTypes(const QList<QString> &typeNames);

    /// A mask for file dialogs for each suffix, such as "*.jpg".
    static QList<QString> fileMasksForExtensionType(TypeRef type);

    /// The masks of all types, one after the other, repeated ones too.
    static QList<QString> fileMasksForExtensionTypes(const QList<TypeRef> &types);

    /// True when one of the types lists the suffix of @p file in lower case.
    ///
    /// Deliberate: a suffix that is registered with a letter in upper case matches no file.
    static bool fileMatchesAnyType(const QString &file, const QList<TypeRef> &types);

    /// fileMatchesAnyType() for one type.
    static bool isType(const QString &file, TypeRef type);

    /// Those of @p files that are of the type, in their order.
    static QList<QString> extractMatching(const QList<QString> &files, TypeRef type);

    /// @p file, a point, and the type's first suffix, whatever @p file ends with.
    static QString fileName(const QString &file, TypeRef type);

    /// @p file when it is of the type, else fileName().
    static QString addMissingExtension(const QString &file, TypeRef type);

    /// @p file without the first of the type's suffixes that it ends with, in upper or lower case.
    static QString removeExtension(const QString &file, TypeRef type);
};

/// The one registry of file types in the process, whichever module asks.
template <>
VEX_EXPORT std::vector<FileTypes::Type> &FileTypes::Type::registeredValues();
