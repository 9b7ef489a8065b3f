#pragma once

#include "scenario/Scenario.hpp"

#include <QList>
#include <QString>
#include <QVariantMap>

namespace oz::services {

/*! What applications have asked while a scenario plays, and no expectation has used: each request meets one
 * expectation. */
class UnusedRequests
{
public:
    /*! A \a message has come to the object at \a path. */
    void add(const QString &path, const QVariantMap &message);
    /*! Uses the oldest request that \a step expects; false where there is none. */
    [[nodiscard]] bool take(const ScenarioStep &step);
    /*! The newest of them, for the error of an expectation, as in the test kits. */
    [[nodiscard]] QString text() const;

private:
    struct Asked
    {
        QString path;
        QVariantMap message;
    };

    QList<Asked> m_asked;
    bool m_hasUsedOthers = false;
};

} // namespace oz::services
