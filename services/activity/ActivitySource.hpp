#pragma once

#include <QMap>
#include <QObject>
#include <QString>

#include <optional>

namespace oz::services {

/*! What the power manager knows: its statuses by their names, among them "user_activity". */
class ActivitySource : public QObject
{
    Q_OBJECT

public:
    /*! Values are without line feeds. */
    using Statuses = QMap<QString, QString>;

    /*! The statuses; nothing while they are not known yet. */
    [[nodiscard]] virtual std::optional<Statuses> statuses() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
