#pragma once

#include <oz/models/ObjectModel.hpp>

#include <QTimer>

namespace oz::models {

/*!
 * The network interfaces of the system, up or down, in the kernel's order. The roles are the properties of
 * oz::device::NetworkDataUsage; the key is "networkInterfaceName". The kernel tells of no change, so the
 * model is as of the last update().
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT NetworkInterfaceModel : public ObjectModel
{
    Q_OBJECT
    /*! Milliseconds from one update to the next; 0, as at first, for none but those asked for. */
    Q_PROPERTY(int interval READ interval WRITE setInterval NOTIFY intervalChanged FINAL)

public:
    /*! Belongs to \a parent. */
    explicit NetworkInterfaceModel(QObject *parent = nullptr);
    ~NetworkInterfaceModel() override;

    //!@{
    /*! The getter of the property. */
    [[nodiscard]] int interval() const { return m_interval; }
    void setInterval(int milliseconds);
    //!@}

public Q_SLOTS:
    /*! Takes in which interfaces there are, and their counters. */
    void update();

Q_SIGNALS:
    /*! The property of this name has changed. */
    void intervalChanged(int interval);

protected:
    /*! For the base. */
    std::unique_ptr<QObject> makeObject(const QVariant &key) override;

private:
    QTimer m_timer;
    int m_interval = 0;
};

} // namespace oz::models
