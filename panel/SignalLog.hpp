#pragma once

#include "meta/SignalTap.hpp"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <deque>
#include <memory>
#include <vector>

/*! The last thousand signals of all facilities of the library, the newest last. A signal that exists with an
 * enumerator and with its number has one row. */
class SignalLog : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT

public:
    enum Role { Time = Qt::UserRole, What, Values };

    explicit SignalLog(QObject *parent = nullptr);
    ~SignalLog() override;

    Q_INVOKABLE void append(const QString &what, const QString &values);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        QString time;
        QString what;
        QString values;
    };

    std::deque<Row> m_rows;
    std::vector<std::unique_ptr<QObject>> m_facilities;
    std::vector<std::unique_ptr<oz::meta::SignalTap>> m_taps;
};
