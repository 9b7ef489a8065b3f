#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace oz::pages {

/*!
 * The page \a name, whose text is \a page, with its generated regions filled anew. A region stands between a
 * line "<!-- generated: REGION -->" and the line "<!-- end -->"; \a contentOf gives the lines of a REGION.
 * Throws Error, with the page and the line, if a region has no end or no content.
 */
[[nodiscard]] QString withRegions(const QString &page, const QString &name,
    const std::function<QStringList(const QString &region)> &contentOf);

} // namespace oz::pages
