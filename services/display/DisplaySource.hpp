#pragma once

#include <oz/DisplayTree.hpp>

#include <QObject>

#include <optional>

namespace oz::services {

/*! The displays of the device, whoever knows them. */
class DisplaySource : public QObject
{
    Q_OBJECT

public:
    /*! The displays; nothing while they are not known yet. */
    [[nodiscard]] virtual std::optional<DisplayTree::Displays> displays() const = 0;

Q_SIGNALS:
    void changed();
};

} // namespace oz::services
