#pragma once

#include "meta/SignalTap.hpp"

#include <QAbstractListModel>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <vector>

/*! The properties of a facility's class, a row per property, of the selected instance or else the first. */
class FacilityValues : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    /*! The facility's name, as the daemon or the command has it; there are no rows for any other name. */
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
