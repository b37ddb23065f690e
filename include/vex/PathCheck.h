#pragma once

#include <QList>
#include <QString>

#include <vex/Export.h>

namespace vex {

/// Why FileUtilsGeneric takes a name or a path for valid or not, and what it does not look at.
class VEX_EXPORT PathCheck
{
public:
    /// Something to know about a text.
    struct Finding
    {
        /// What it is.
        enum Kind {
            Empty, ///< reason: there is no text
            UnsupportedCharacter, ///< reason: no name may hold it
            UnknownDrive, ///< reason: the first part ends with a colon and is not one character
            NothingBehindServerPrefix, ///< reason: nothing follows "//"
            InvalidText, ///< advice: half of a surrogate pair; no character of the text is tested
            UntestedCharacter, ///< advice: an unsupported character in such a text
            ReservedName, ///< advice: Windows takes it for a device
            DotOrBlankAtEnd, ///< advice: Windows drops it
            LongName, ///< advice: more than 255 bytes (Linux) or characters (Windows)
            LongPath, ///< advice: more than 4095 bytes (Linux) or 259 characters (Windows)
        };

        Kind kind = Empty; ///< what it is
        qsizetype position = 0; ///< where in PathCheck::text, from 0, in UTF-16 code units
        qsizetype length = 0; ///< how much of the text it is about, in UTF-16 code units
        QString message; ///< for a person, translated

        /// True when the text is not valid because of this; otherwise it is advice.
        bool isReason() const { return kind <= NothingBehindServerPrefix; }
    };

    /// What FileUtilsGeneric::isValidFileName() thinks of @p name.
    static PathCheck ofFileName(const QString &name);
    /// What FileUtilsGeneric::isValidFilePath() thinks of @p path.
    static PathCheck ofFilePath(const QString &path);
    /// What FileUtilsGeneric::isValidLocalPath() thinks of @p path.
    static PathCheck ofLocalPath(const QString &path);

    /// What has been judged: the text as given; of a local path, the text once cleaned.
    QString text;
    /// Every reason and every advice, by position.
    QList<Finding> findings;

    /// True when there is no reason against the text: the answer of the test itself.
    bool isValid() const;
};

} // namespace vex
