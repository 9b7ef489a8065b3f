#pragma once

#include <oz/client/FollowedObject.hpp>

#include <QColor>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

/*! What the LED shows, and what applications ask of it. */
class LedStatus : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    /*! The colour that the LED shows; transparent while it is dark or its state is not known. */
    Q_PROPERTY(QColor color READ color NOTIFY colorChanged)
    /*! That colour's name; empty while it is dark. */
    Q_PROPERTY(QString colorName READ colorName NOTIFY colorChanged)
    /*! The requests to the LED that are under way, the newest last: maps with "color", "count" (below 0 until
     * it is cancelled), "shown" and "process"; and the last one that ended, with "end". Empty for users who
     * may not see them. */
    Q_PROPERTY(QVariantList requests READ requests NOTIFY requestsChanged)
    Q_PROPERTY(QVariantMap last READ last NOTIFY requestsChanged)

public:
    explicit LedStatus(QObject *parent = nullptr);

    [[nodiscard]] QColor color() const { return m_color; }
    [[nodiscard]] QString colorName() const;
    [[nodiscard]] QVariantList requests() const
    {
        return m_activity.value(QStringLiteral("requests")).toList();
    }
    [[nodiscard]] QVariantMap last() const { return m_activity.value(QStringLiteral("last")).toMap(); }

Q_SIGNALS:
    void colorChanged();
    void requestsChanged();

private:
    void updateColor(const QVariantMap &lit);

    oz::client::FollowedObject m_statusObject;
    oz::client::FollowedObject m_activityObject;
    QVariantMap m_activity;
    QColor m_color;
};
