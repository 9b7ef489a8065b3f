#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace oz::services {

/*! How the phone is held, whoever knows it. */
class OrientationSource : public QObject
{
    Q_OBJECT

public:
    /*! "top-up", "bottom-up", "left-up", "right-up", "face-up", "face-down", or "undefined" where it cannot
     * be told. */
    static const QStringList &orientations();

    /*! One of orientations(); nothing while it is not known yet. */
    [[nodiscard]] virtual std::optional<QString> orientation() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
