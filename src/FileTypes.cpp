#include <vex/FileTypes.h>

#include <QFileInfo>
#include <QHash>
#include <QVarLengthArray>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

template <>
std::vector<FileTypes::Type> &FileTypes::Type::registeredValues()
{
    static std::vector<FileTypes::Type> values;
    return values;
}

namespace {

// Shared by several types, and so made before them.
const QString kRptc = u"rptc"_s;
const QString kTabc = u"tabc"_s;
const QString kLvcfg = u"lvcfg"_s;
const QString kPvtcfg = u"pvtcfg"_s;

using ShortText = QVarLengthArray<char16_t, 16>;

/// What QString::toLower() gives; ASCII without an allocation.
ShortText lowerCase(QStringView text)
{
    ShortText lower(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t character = text[i].unicode();
        if (character > 0x7f) {
            const QString whole = text.toString().toLower();
            return ShortText(whole.utf16(), whole.utf16() + whole.size());
        }
        const bool isUpper = character >= u'A' && character <= u'Z';
        lower[i] = isUpper ? char16_t(character + (u'a' - u'A')) : character;
    }
    return lower;
}

/// True when QFileInfo goes by nothing but points and slashes for the suffix of @p file.
///
/// A colon may end the name of a resource or a search path, which it looks up, unless it stands
/// where that of a drive does; backslashes are slashes on Windows; and it counts up to here only.
bool isPlainPath(const QString &file)
{
    return !file.startsWith(u':') && file.indexOf(u':', 2) < 0 && !file.contains(u'\\')
        && file.size() <= std::numeric_limits<qint16>::max();
}

/// QFileInfo::suffix() in lower case, as suffixes of files are compared with registered ones.
ShortText suffixOf(const QString &file)
{
    if (!isPlainPath(file))
        return lowerCase(QFileInfo(file).suffix());
    const auto mark = std::find_if(file.rbegin(), file.rend(),
        [](QChar character) { return character == u'.' || character == u'/'; });
    const bool hasSuffix = mark != file.rend() && *mark == u'.';
    return lowerCase(QStringView(file).last(hasSuffix ? mark - file.rbegin() : 0));
}

/// QList::contains() without a call for each text: length and first letter tell most apart.
bool lists(const QList<QString> &suffixes, QStringView suffix)
{
    for (const QStringView listed : suffixes) {
        if (std::equal(listed.begin(), listed.end(), suffix.begin(), suffix.end()))
            return true;
    }
    return false;
}

/// The type for a suffix in lower case.
FileTypes::TypeRef typeOf(QStringView suffix)
{
    const FileTypes::Type *best = nullptr;
    for (const FileTypes::Type &type : FileTypes::Type::registeredValues()) {
        const QList<QString> &suffixes = type.data().suffixes;
        const bool isBetter = !best || suffixes.size() < best->data().suffixes.size();
        if (isBetter && lists(suffixes, suffix))
            best = &type;
    }
    return best ? *best : FileTypes::Invalid;
}

} // namespace

// Their order is that of the registry.
const FileTypes::Type FileTypes::Invalid("Invalid"_L1, {{QString()}});
const FileTypes::Type FileTypes::JPG("JPG"_L1, {{u"jpg"_s, u"jpeg"_s}});
const FileTypes::Type FileTypes::PDF("PDF"_L1, {{u"pdf"_s}});
const FileTypes::Type FileTypes::PNG("PNG"_L1, {{u"png"_s}});
const FileTypes::Type FileTypes::WMF("WMF"_L1, {{u"wmf"_s}});
const FileTypes::Type FileTypes::INTABIO("INTABIO"_L1, {{u"itb"_s}});
const FileTypes::Type FileTypes::CSV("CSV"_L1, {{u"csv"_s}});
const FileTypes::Type FileTypes::PI("PI"_L1, {{u"pi"_s}});
const FileTypes::Type FileTypes::JSON("JSON"_L1, {{u"json"_s}});
const FileTypes::Type FileTypes::HTML("HTML"_L1, {{u"html"_s, u"htm"_s}});
const FileTypes::Type FileTypes::BATCHTASK("BATCHTASK"_L1, {{u"vexbat"_s}});
const FileTypes::Type FileTypes::MGF("MGF"_L1, {{u"mgf"_s}});
const FileTypes::Type FileTypes::INI("INI"_L1, {{u"ini"_s}});
const FileTypes::Type FileTypes::ALLFILES("ALLFILES"_L1, {{u"*"_s}});
const FileTypes::Type FileTypes::TEXT("TEXT"_L1, {{u"txt"_s}});
const FileTypes::Type FileTypes::QURSLT("QURSLT"_L1, {{u"qurslt"_s}});
const FileTypes::Type FileTypes::FASTA("FASTA"_L1, {{u"fasta"_s, u"fa"_s}});
const FileTypes::Type FileTypes::SEGMENTS("SEGMENTS"_L1, {{u"seg"_s}});
const FileTypes::Type FileTypes::REPORT_MODULE_RPTC_BACKWARD(
    "REPORT_MODULE_RPTC_BACKWARD"_L1, {{kRptc, kLvcfg}});
const FileTypes::Type FileTypes::REPORT_MODULE_TABC_BACKWARD(
    "REPORT_MODULE_TABC_BACKWARD"_L1, {{kTabc, kPvtcfg}});
const FileTypes::Type FileTypes::REPORT_MODULE_LOAD_EXTENSIONS(
    "REPORT_MODULE_LOAD_EXTENSIONS"_L1, {{kRptc, kTabc, kLvcfg, kPvtcfg}});
const FileTypes::Type FileTypes::REPORT_MODULE_RPTC("REPORT_MODULE_RPTC"_L1, {{kRptc}});
const FileTypes::Type FileTypes::REPORT_MODULE_TABC("REPORT_MODULE_TABC"_L1, {{kTabc}});
const FileTypes::Type FileTypes::REPORT_MODULE_POSTPIVOT_COLUMNS(
    "REPORT_MODULE_POSTPIVOT_COLUMNS"_L1, {{u"postpvtjs"_s}});
const FileTypes::Type FileTypes::REPORT_MODULE_PREPIVOT_COLUMNS(
    "REPORT_MODULE_PREPIVOT_COLUMNS"_L1, {{u"prepvtjs"_s}});
const FileTypes::Type FileTypes::REPORT_MODULE_PROTEIN_3D_SCRIPT_FILES(
    "REPORT_MODULE_PROTEIN_3D_SCRIPT_FILES"_L1, {{u"p3Djs"_s}});
const FileTypes::Type FileTypes::EXE("EXE"_L1, {{u"exe"_s}});
const FileTypes::Type FileTypes::BMP("BMP"_L1, {{u"bmp"_s}});
const FileTypes::Type FileTypes::DAT("DAT"_L1, {{u"dat"_s}});
const FileTypes::Type FileTypes::PRV("PRV"_L1, {{u"prv"_s}});
const FileTypes::Type FileTypes::SVG("SVG"_L1, {{u"svg"_s}});
const FileTypes::Type FileTypes::DATABASE("DATABASE"_L1, {{u"db"_s}});
const FileTypes::Type FileTypes::EXCELREPORT("EXCELREPORT"_L1, {{u"xlsx"_s}});
const FileTypes::Type FileTypes::SQLLITE("SQLLITE"_L1, {{u"sqlite"_s}});
const FileTypes::Type FileTypes::PDB("PDB"_L1, {{u"pdb"_s}});
const FileTypes::Type FileTypes::PSE("PSE"_L1, {{u"pse"_s}});
const FileTypes::Type FileTypes::JAVASCRIPT("JAVASCRIPT"_L1, {{u"js"_s}});
const FileTypes::Type FileTypes::CFT("CFT"_L1, {{u"cft"_s}});
const FileTypes::Type FileTypes::DMP("DMP"_L1, {{u"dmp"_s}});
const FileTypes::Type FileTypes::PACQ("PACQ"_L1, {{u"pacq"_s}});
const FileTypes::Type FileTypes::ZIP("ZIP"_L1, {{u"zip"_s}});
const FileTypes::Type FileTypes::GIF("GIF"_L1, {{u"gif"_s}});
const FileTypes::Type FileTypes::ARW("ARW"_L1, {{u"arw"_s}});
const FileTypes::Type FileTypes::TEMPLATEEDITORSCRIPT("TEMPLATEEDITORSCRIPT"_L1, {{u"tes"_s}});
const FileTypes::Type FileTypes::THERMO_CSV("THERMO_CSV"_L1, {{u"bpf"_s}});
const FileTypes::Type FileTypes::TSV("TSV"_L1, {{u"tsv"_s}});

QString FileTypes::typeToString(TypeRef type)
{
    return QString(type.name());
}

FileTypes::TypeRef FileTypes::stringToType(const QString &name)
{
    const QByteArray bytes = name.toLatin1();
    for (const Type &type : Type::registeredValues()) {
        if (type.name() == QLatin1StringView(bytes))
            return type;
    }
    return Invalid;
}

FileTypes::TypeRef FileTypes::suffixToType(const QString &suffix)
{
    return typeOf(lowerCase(suffix));
}

QList<FileTypes::SuffixEntry> FileTypes::suffixTable()
{
    QList<SuffixEntry> table;
    QHash<QString, qsizetype> places; // in the table
    for (const Type &type : Type::registeredValues()) {
        for (const QString &suffix : type.data().suffixes) {
            const auto place = places.constFind(suffix);
            if (place != places.constEnd()) {
                QList<QString> &types = table[*place].types;
                if (types.constLast() != type.name()) // it may list a suffix twice
                    types.append(type.name());
                continue;
            }
            places.insert(suffix, table.size());
            table.append({suffix, {type.name()}, typeToString(suffixToType(suffix)),
                QStringView(suffixOf("name."_L1 + suffix)) == suffix});
        }
    }
    return table;
}

FileTypes::TypeRef FileTypes::fileToType(const QString &file)
{
    return typeOf(suffixOf(file));
}

QList<QString> FileTypes::fileSuffixesForExtensionType(TypeRef type)
{
    return type.data().suffixes;
}

QString FileTypes::fileSuffixFromExtensionType(TypeRef type)
{
    return type.data().suffixes.value(0);
}

QList<QString> FileTypes::fileSuffixesFromExtensionTypes(const QList<TypeRef> &types)
{
    QList<QString> suffixes;
    for (const TypeRef type : types)
        suffixes += type.data().suffixes;
    return suffixes;
}

QList<QString> FileTypes::fileSuffixesFromExtensionTypes(const QList<QString> &typeNames)
{
    QList<QString> suffixes;
    for (const QString &name : typeNames)
        suffixes += stringToType(name).data().suffixes;
    return suffixes;
}

QList<QString> FileTypes::fileMasksForExtensionType(TypeRef type)
{
    QList<QString> masks;
    for (const QString &suffix : type.data().suffixes)
        masks.append(u"*."_s + suffix);
    return masks;
}

QList<QString> FileTypes::fileMasksForExtensionTypes(const QList<TypeRef> &types)
{
    QList<QString> masks;
    for (const TypeRef type : types)
        masks += fileMasksForExtensionType(type);
    return masks;
}

bool FileTypes::fileMatchesAnyType(const QString &file, const QList<TypeRef> &types)
{
    const ShortText suffix = suffixOf(file);
    return std::any_of(types.begin(), types.end(),
        [&suffix](TypeRef type) { return lists(type.data().suffixes, suffix); });
}

bool FileTypes::isType(const QString &file, TypeRef type)
{
    return lists(type.data().suffixes, suffixOf(file));
}

QList<QString> FileTypes::extractMatching(const QList<QString> &files, TypeRef type)
{
    QList<QString> matching;
    for (const QString &file : files) {
        if (isType(file, type))
            matching.append(file);
    }
    return matching;
}

QString FileTypes::fileName(const QString &file, TypeRef type)
{
    return file + u'.' + fileSuffixFromExtensionType(type);
}

QString FileTypes::addMissingExtension(const QString &file, TypeRef type)
{
    return isType(file, type) ? file : fileName(file, type);
}

QString FileTypes::removeExtension(const QString &file, TypeRef type)
{
    for (const QString &suffix : type.data().suffixes) {
        const QString ending = u'.' + suffix;
        if (file.endsWith(ending, Qt::CaseInsensitive))
            return file.chopped(ending.size());
    }
    return file;
}
