#pragma once

#include <oz/PpsObject.hpp>

#include <QHash>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <functional>

/*! A way to the daemon's control object, which opens itself and never waits. */
class DaemonLink : public QObject
{
    Q_OBJECT

public:
    /*! Is called with the answer's "dat"; or with what is wrong. */
    using Answered = std::function<void(const QVariantMap &told, const QString &problem)>;

    explicit DaemonLink(QObject *parent = nullptr);

    [[nodiscard]] bool isOpen() const { return m_control.isOpen(); }
    /*! Sends a request; \a answered is called once, later. */
    void ask(const QString &request, const QVariantMap &data, const Answered &answered);

Q_SIGNALS:
    /*! A daemon is there, or another one: what the one before was asked is not answered any more. */
    void opened();

private:
    void open();
    void takeAnswers();
    void giveUp(const QString &problem);

    oz::PpsObject m_control;
    QTimer m_again; // tries to reach a daemon that is not there yet
    QHash<int, Answered> m_asked;
    int m_last = 0;
};
