#pragma once

#include "meta/SignalTap.hpp"

#include <QAbstractListModel>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <vector>

/*! What the library says of a facility: a row a property of its class, of the first instance or the one that
 * is selected. */
class FacilityValues : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    /*! The facility, as the daemon or the command calls it; where it is none there are no rows. */
    Q_PROPERTY(QString facility READ facility WRITE setFacility NOTIFY facilityChanged)
    Q_PROPERTY(QString instance READ instance WRITE setInstance NOTIFY facilityChanged)

public:
    enum Role { Name = Qt::UserRole, Value };

    explicit FacilityValues(QObject *parent = nullptr);
    ~FacilityValues() override;

    [[nodiscard]] QString facility() const { return m_facility; }
    void setFacility(const QString &facility);
    [[nodiscard]] QString instance() const { return m_instance; }
    void setInstance(const QString &instance);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void facilityChanged();

private:
    void make();
    void read();

    QString m_facility;
    QString m_instance;
    std::unique_ptr<QObject> m_object;
    std::unique_ptr<oz::meta::SignalTap> m_tap;
    std::vector<std::pair<QString, QString>> m_rows;
    QTimer m_soon;
};
