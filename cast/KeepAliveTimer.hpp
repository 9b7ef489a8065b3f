#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace oz::cast {

/*! When a display is to be asked whether it is still there, and when it has not answered in time. */
class KeepAliveTimer : public QObject
{
    Q_OBJECT

public:
    KeepAliveTimer(std::chrono::milliseconds interval, std::chrono::milliseconds answerLimit);

    void start() { m_interval.start(); }
    /*! Leaves a question that has been asked its time limit. */
    void stopAsking() { m_interval.stop(); }
    void stop();
    void onAnswer() { m_answerLimit.stop(); }

Q_SIGNALS:
    /*! The display is to be asked now; not while it owes an answer. */
    void due();
    void unanswered();

private:
    void onInterval();

    QTimer m_interval;
    QTimer m_answerLimit;
};

} // namespace oz::cast
