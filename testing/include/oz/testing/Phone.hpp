#pragma once

#include <oz/testing/OzTestingGlobal.hpp>
#include <oz/testing/PhoneError.hpp>
#include <oz/testing/PhoneParts.hpp>
#include <oz/testing/PhoneSettings.hpp>

#include <QList>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <chrono>
#include <memory>

namespace oz::testing {

/*! Something that an application asked of a phone. */
struct PhoneRequest
{
    QString kind; //!< as scenarios call it: "led.flash", "vibration.run", "data-profile.connect", ...
    QVariantMap values; //!< what it came with: "color" and "count", ...
    std::chrono::milliseconds at{0}; //!< since the phone started, of the real time
};

/*! How a scenario is played. */
struct PlayOptions
{
    /*! What an application does before a scenario begins. */
    enum class WaitFor {
        Nothing, //!< it begins at once
        Open, //!< the application opens its first object, or connects to its first control object or device
        Request, //!< the application sends its first message to a control object or device
    };

    double speed = 1; //!< the phone's time to the real one, 0.001 to 100,000; 0: without waiting, as `max`
    QVariantMap variables = {}; //!< values of the scenario's variables, in the place of its own
    bool keepGoing = false; //!< past what fails
    /*!
     * What it waits for, counted from the call to play() on. A test that has the application in its own
     * process needs nothing: it makes the application's objects and then plays, and waiting for what was
     * opened before would be in vain. A test that starts a program calls play() with WaitFor::Open first, and
     * starts the program then, which so misses no step.
     */
    WaitFor waitFor = WaitFor::Nothing;
    /*! Of the real time; after that the scenario begins without an application. Up to an hour. */
    std::chrono::milliseconds waitLimit = std::chrono::seconds(10);
};

/*!
 * A whole phone for a test, which nobody else sees: services of its own, under a device root of its own. It
 * starts in milliseconds, and ends with the instance, or with the test's process, even where that is killed.
 *
 * What applications in this process, and in those that it starts, see through the library is this phone. So
 * make it before them, and end it after them. A process has one such phone at a time, and is meant to have no
 * second thread yet when it makes it; with Root::Own there can be as many as wanted, for programs that are
 * started with environment().
 *
 * The parts of the phone, such as battery(), have a call for every verb of `ozdevice sim`: for a verb that
 * takes the value of a key in the phone's file it is named after the key, as setLevel(); for any other one
 * after the verb, as peerAppears().
 *
 * Waits take a limit of the real time. They run the event loop of the calling thread where it has one, so
 * that applications in it go on meanwhile; without one they work as well. Every call that fails throws
 * PhoneError, as does a wait in vain. An instance and its parts may be used from any thread; making and
 * destroying one with Root::OfProcess changes the environment.
 */
class OZ_TESTING_EXPORT Phone : public PhoneParts
{
public:
    /*! Who sees the phone. */
    enum class Root {
        OfProcess, //!< this process: it is what OZ_DEVICE_ROOT names for the life of the instance
        Own, //!< programs that are started with environment(), alone
    };
    /*! How long waits take at most that name no other limit. */
    static constexpr std::chrono::seconds DefaultLimit{5};

    /*! Starts a phone, and returns when everything is served. */
    explicit Phone(const PhoneSettings &settings = {}, Root root = Root::OfProcess);
    ~Phone();
    Phone(const Phone &) = delete;
    Phone &operator=(const Phone &) = delete;

    /*! Its device root. */
    [[nodiscard]] QString root() const;
    /*! This process's environment with the device root, for programs that are to see this phone. */
    [[nodiscard]] QProcessEnvironment environment() const;
    /*! The process of its services. */
    [[nodiscard]] qint64 processId() const;

    /*! Tells it in words what `ozdevice sim` would: {"battery", "level", "20"}. */
    void tell(const QStringList &words);
    /*! What it was told since it started, in words and in order. */
    [[nodiscard]] QStringList orders() const;

    /*!
     * What is published under a name that scenarios' conditions have: "battery.level", "miracast.sinks". A
     * number, text, list, or true or false; invalid where it is not known. docs/scenarios.md lists the names.
     */
    [[nodiscard]] QVariant value(const QString &name) const;
    /*! Whether a condition of scenarios holds now: "led.active and led.color == red". */
    [[nodiscard]] bool holds(const QString &condition) const;
    /*! Waits until a condition holds. */
    void waitFor(const QString &condition, std::chrono::milliseconds limit = DefaultLimit) const;

    /*! What applications asked of the phone since it started, or since forgetRequests(): up to 10,000, of all
     * kinds or of one. */
    [[nodiscard]] QList<PhoneRequest> requests(const QString &kind = {}) const;
    /*!
     * Waits until applications have sent so many requests of a kind, those before the call included; \a with
     * says what they are to come with, as in scenarios: "color == red and count == 2". Gives the requests.
     */
    QList<PhoneRequest> waitForRequests(int count, const QString &kind, const QString &with = {},
        std::chrono::milliseconds limit = DefaultLimit) const;
    /*! As waitForRequests(), for the first one. */
    PhoneRequest waitForRequest(
        const QString &kind, const QString &with = {}, std::chrono::milliseconds limit = DefaultLimit) const
    {
        return waitForRequests(1, kind, with, limit).first();
    }
    /*! Lets requests count from now on. */
    void forgetRequests();

    /*! Begins to play the scenario in \a file, all of which is checked before. One is played at a time. It
     * returns at once, also where the scenario waits for an application. */
    void play(const QString &file, const PlayOptions &options = {});
    /*! Whether a scenario plays, or waits for an application to do so. */
    [[nodiscard]] bool isPlaying() const;
    /*! Waits until the scenario has been played; throws with the first step that failed, where one did. */
    void waitUntilPlayed(std::chrono::milliseconds limit) const;
    /*! Ends the scenario that plays. */
    void stopPlaying();

    /*! What the phone's services have logged. */
    [[nodiscard]] QString log() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace oz::testing
