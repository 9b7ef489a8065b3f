#pragma once

#include <oz/models/ObjectModel.hpp>

#include <QTimer>

namespace oz::models {

/*!
 * The network interfaces of the system, up or down, in the kernel's order. The roles are the properties of
 * oz::device::NetworkDataUsage; the key is "networkInterfaceName". The kernel reports no changes, so the
 * model shows the state at the last update().
 *
 * Use an instance on the thread that created it.
 */
class OZ_MODELS_EXPORT NetworkInterfaceModel : public ObjectModel
{
    Q_OBJECT
    /*! Milliseconds between updates; 0, the default, updates only in update(). */
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
    /*! Reads the interfaces and their counters. */
    void update();

Q_SIGNALS:
    /*! The property of this name has changed. */
    void intervalChanged(int interval);

protected:
    /*! Implements ObjectModel. */
    std::unique_ptr<QObject> makeObject(const QVariant &key) override;

private:
    QTimer m_timer;
    int m_interval = 0;
};

} // namespace oz::models
