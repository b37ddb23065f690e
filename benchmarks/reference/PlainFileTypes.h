#pragma once

#include <vex/FileTypes.h>

#include <QFileInfo>

#include <vector>

/// Finding file types written out step by step: what the library's answers and times are compared
/// with.
namespace plain {

inline FileTypes::TypeRef suffixToType(const QString &suffix)
{
    const QString lower = suffix.toLower();
    std::vector<FileTypes::TypeRef> matching;
    for (const FileTypes::Type &type : FileTypes::Type::registeredValues()) {
        const QList<QString> suffixes = type.data().suffixes;
        if (suffixes.contains(lower))
            matching.emplace_back(type);
    }
    if (matching.empty())
        return FileTypes::Invalid;
    FileTypes::TypeRef best = matching.front();
    for (const FileTypes::TypeRef type : matching) {
        if (type.data().suffixes.size() < best.data().suffixes.size())
            best = type;
    }
    return best;
}

inline FileTypes::TypeRef fileToType(const QString &file)
{
    return suffixToType(QFileInfo(file).suffix());
}

} // namespace plain
