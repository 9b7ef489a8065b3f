#include "facilities/CommandError.hpp"

#include <algorithm>
#include <vector>

namespace oz::tools {

namespace {

// The number of letters to insert, remove, change or swap with their neighbour to turn one word into the
// other.
int distance(const QString &from, const QString &to)
{
    std::vector<std::vector<int>> table(
        std::size_t(from.size() + 1), std::vector<int>(std::size_t(to.size() + 1)));
    const auto at = [&](qsizetype i, qsizetype j) -> int & { return table[std::size_t(i)][std::size_t(j)]; };
    for (qsizetype i = 0; i <= from.size(); ++i) {
        for (qsizetype j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                at(i, j) = int(i + j);
                continue;
            }
            at(i, j) = std::min(
                {at(i - 1, j) + 1, at(i, j - 1) + 1, at(i - 1, j - 1) + (from[i - 1] == to[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
        }
    }
    return at(from.size(), to.size());
}

// The most similar of \a known, best first.
QStringList nearest(const QString &word, const QStringList &known)
{
    const QString lower = word.toLower();
    const int tolerance = std::max(1, int(word.size()) / 3);
    std::vector<std::pair<int, QString>> found;
    for (const QString &candidate : known) {
        const bool isBegun = lower.size() > 1 && candidate.startsWith(lower, Qt::CaseInsensitive);
        const int difference = isBegun ? 0 : distance(lower, candidate.toLower());
        if (difference <= tolerance)
            found.emplace_back(difference, candidate);
    }
    std::stable_sort(
        found.begin(), found.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    QStringList names;
    for (std::size_t i = 0; i < std::min<std::size_t>(found.size(), 3); ++i)
        names.append(found[i].second);
    return names;
}

} // namespace

QString enumerated(const QStringList &words)
{
    if (words.isEmpty())
        return u"none"_s;
    if (words.size() == 1)
        return words.first();
    return QStringList(words.mid(0, words.size() - 1)).join(", "_L1) + " and "_L1 + words.last();
}

QString unknownText(const QString &what, const QString &word, const QStringList &known)
{
    const QStringList near = nearest(word, known);
    return what + " '"_L1 + word + "'; "_L1
        + (near.isEmpty() ? QString("there is "_L1 + enumerated(known))
                          : QString("did you mean "_L1 + near.join(" or "_L1) + QLatin1Char('?')));
}

} // namespace oz::tools
