#pragma once

#include <QStringList>

#include <string>
#include <vector>

namespace oz::tools {

/*! The words of the command line after "--", which the parser does not see. */
inline std::vector<std::string> &wordsAfterDashes()
{
    static std::vector<std::string> words;
    return words;
}

[[nodiscard]] inline QStringList toStringList(const std::vector<std::string> &words)
{
    QStringList list;
    for (const std::string &word : words)
        list.append(QString::fromStdString(word));
    return list;
}

} // namespace oz::tools
