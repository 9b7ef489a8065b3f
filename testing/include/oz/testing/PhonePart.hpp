#pragma once

#include <oz/device/CellularConnectionState.hpp>
#include <oz/device/LedColor.hpp>
#include <oz/testing/OzTestingGlobal.hpp>

#include <QString>
#include <QStringList>
#include <QVariant>

#include <chrono>
#include <optional>

namespace oz::testing {

class PhoneLink;

/*!
 * A part of a test's phone. It is a handle: valid as long as its phone is, cheap to copy, and usable from any
 * thread. When a call returns, its effect is published. A call that fails throws PhoneError.
 */
class OZ_TESTING_EXPORT PhonePart
{
public:
    /*! The part \a name, or the one of its instances called \a instance; Phone makes them. */
    PhonePart(PhoneLink &link, const QString &name, const QString &instance = {});

protected:
    /*! Tells the part what `ozdevice sim` would; arguments that are null are left out. */
    void tell(const char *verb, const QStringList &arguments = {});
    /*! The part's value that conditions of scenarios call \a name. */
    [[nodiscard]] QVariant value(const char *name) const;

    /*! A value as an argument of a verb. */
    [[nodiscard]] static QString word(bool value);
    /*! \copydoc word(bool) */
    [[nodiscard]] static QString word(int value) { return QString::number(value); }
    /*! \copydoc word(bool) */
    [[nodiscard]] static QString word(double value);
    /*! \copydoc word(bool) */
    [[nodiscard]] static QString word(std::optional<double> value);
    /*! \copydoc word(bool) */
    [[nodiscard]] static QString word(const QString &value);
    /*! \copydoc word(bool) */
    [[nodiscard]] static QString word(const QStringList &values);
    /*! A time in seconds. */
    [[nodiscard]] static QString word(std::chrono::milliseconds time);
    /*! An argument that is left out if it is empty. */
    [[nodiscard]] static QString optionalWord(const QString &value);
    /*! \copydoc optionalWord(const QString &) */
    [[nodiscard]] static QString optionalWord(const QStringList &values);

private:
    PhoneLink *m_link;
    QString m_name;
    QString m_instance;
};

/*! A part that a service publishes. */
class OZ_TESTING_EXPORT ServicePart : public PhonePart
{
public:
    using PhonePart::PhonePart;
    /*! Ends the facility's service, as if it had crashed. */
    void killService() { tell("kill-service"); }
    /*! Starts it again. */
    void startService() { tell("start-service"); }
};

/*! A part whose service answers requests. Each fault affects the next request only. */
class OZ_TESTING_EXPORT AnsweringPart : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! Answers the next request after a delay of 1 ms to one hour. */
    void answerLate(std::chrono::milliseconds delay)
    {
        tell("answer-late", {QString::number(delay.count())});
    }
    /*! Leaves the next request unanswered. */
    void neverAnswer() { tell("never-answer"); }
};

/*! A part whose service can have every fault. */
class OZ_TESTING_EXPORT FaultyPart : public AnsweringPart
{
public:
    using AnsweringPart::AnsweringPart;
    /*! Answers the next request with an errno, 1 to 4095. */
    void failWith(int error) { tell("fail-with", {word(error)}); }
    /*! Closes the connection at the next request, as a service that dies does. */
    void dieOnRequest() { tell("die-on-request"); }
    /*! Sends a malformed answer to the next request. */
    void answerRubbish() { tell("answer-rubbish"); }
};

/*! How a data profile is connected. */
class OZ_TESTING_EXPORT DataProfilePart : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! The state of the connection. */
    [[nodiscard]] oz::device::CellularConnectionState::Type connection() const;
};

/*! What the notification LED shows. */
class OZ_TESTING_EXPORT LedPart : public FaultyPart
{
public:
    using FaultyPart::FaultyPart;
    /*! The colour that it shows now; None if it is dark. */
    [[nodiscard]] oz::device::LedColor::Type lit() const { return colorOf("lit"); }
    /*! Whether a request of an application is under way. */
    [[nodiscard]] bool isActive() const { return value("active").toBool(); }
    /*! The colour of the newest request under way; None without one. */
    [[nodiscard]] oz::device::LedColor::Type color() const { return colorOf("color"); }
    /*! The number of flashes since the service started. */
    [[nodiscard]] int flashes() const { return value("flashes").toInt(); }

private:
    [[nodiscard]] oz::device::LedColor::Type colorOf(const char *name) const;
};

/*! What the vibration motor does. */
class OZ_TESTING_EXPORT VibrationPart : public ServicePart
{
public:
    using ServicePart::ServicePart;
    /*! A run that is over. */
    struct Run
    {
        std::chrono::milliseconds asked{0}; //!< how long it was to be
        std::chrono::milliseconds ran{0}; //!< how long it was
        int intensity = 0; //!< 1 to 100
        QString end; //!< "done", "stopped" or "replaced"; empty if there was no run
    };
    /*! Whether the motor runs. */
    [[nodiscard]] bool isRunning() const { return value("running").toBool(); }
    /*! 1 to 100; 0 while it does not run. */
    [[nodiscard]] int intensity() const { return value("intensity").toInt(); }
    /*! The number of runs since the service started. */
    [[nodiscard]] int runs() const { return value("runs").toInt(); }
    /*! The run that ended last. */
    [[nodiscard]] Run last() const;
};

} // namespace oz::testing
