#pragma once

#include <oz/device/Led.hpp>

#include <QRecursiveMutex>
#include <QVariantMap>

#include <atomic>
#include <memory>

namespace ozmock {
class LedPpsChannel;
}

namespace oz::device {

class LedPrivate : public QObject
{
    Q_OBJECT

public:
    LedPrivate(Led &q, LedColor::Type color);
    ~LedPrivate() override;

    /*! The colour that is meant by a value that is one above a colour with red in it. */
    [[nodiscard]] static LedColor::Type fixColor(int color);

    [[nodiscard]] LedColor::Type color() const { return m_color; }
    [[nodiscard]] int remainingFlashCount() const { return m_remainingFlashCount; }
    [[nodiscard]] bool isActive() const { return m_remainingFlashCount != 0; }
    void setColor(LedColor::Type color);
    void resetColor();
    void flash();
    void flash(int count);
    void cancel();

Q_SIGNALS:
    void send(QVariantMap message);

private Q_SLOTS:
    void onReceive(const QVariantMap &message);

private:
    class Operation;

    [[nodiscard]] QVariantMap message(const QString &name, const QVariantMap &data) const;
    void announceColor();
    void bringHome(ozmock::LedPpsChannel *channel);
    /*! Reports to RequestError whether the last message of \a channel was sent. */
    static void noteOutcome(const ozmock::LedPpsChannel &channel);

    Led &q;
    const QString m_key; // the id of every request of this object
    // The getters read these two without the mutex.
    std::atomic<LedColor::Type> m_color;
    std::atomic<qint32> m_remainingFlashCount = 0; // 0: idle, -1: until cancelled
    // Recursive: operations are made of each other, and slots call them.
    std::shared_ptr<QRecursiveMutex> m_mutex = std::make_shared<QRecursiveMutex>();
    ozmock::LedPpsChannel *m_channel = nullptr; // the channel of the request that is under way
};

} // namespace oz::device
