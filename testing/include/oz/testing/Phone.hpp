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
#include <functional>
#include <memory>

namespace oz::testing {

/*! A request of an application to a phone. */
struct PhoneRequest
{
    QString kind; //!< as scenarios call it: "led.flash", "vibration.run", "data-profile.connect", ...
    QVariantMap values; //!< its values: "color" and "count", ...
    std::chrono::milliseconds at{0}; //!< real time since the phone started
};

/*! How a scenario is played. */
struct PlayOptions
{
    /*! What an application must do before the scenario begins. */
    enum class WaitFor {
        Nothing, //!< it begins at once
        Open, //!< the application opens its first object, or connects to its first control object or device
        Request, //!< the application sends its first message to a control object or device
    };

    double speed = 1; //!< of the phone's time, 0.001 to 100,000 times the real one; 0 does not wait
    QVariantMap variables = {}; //!< replace the values of the scenario's variables
    bool keepGoing = false; //!< after a step that fails
    /*!
     * What the scenario waits for after the call to play(). A test with the application in its own process
     * needs Nothing: it creates the application's objects, then plays. Objects that were opened before the
     * call do not count. A test that starts a program calls play() with WaitFor::Open before it starts the
     * program, so that the program misses no step.
     */
    WaitFor waitFor = WaitFor::Nothing;
    /*! The real time, up to an hour, after which the scenario begins without an application. */
    std::chrono::milliseconds waitLimit = std::chrono::seconds(10);
};

/*!
 * A private phone for a test, with services and a device root of its own. It starts in milliseconds, and ends
 * with the instance or with the test's process, even if that is killed.
 *
 * Applications in this process, and in processes that it starts, see this phone through the library. Create
 * it before them and before further threads, and destroy it after them. A process has one such phone at a
 * time. With Root::Own there can be any number of phones, for programs that are started with environment().
 *
 * The parts of the phone, such as battery(), have a call for every verb of `ozdevice sim`: for a verb that
 * takes the value of a key in the phone's file it is named after the key, as setLevel(); for any other one
 * after the verb, as peerAppears().
 *
 * Waits have a limit of real time. They run the event loop of the calling thread, if it has one, so that
 * applications in it go on meanwhile. A call that fails throws PhoneError, as does a wait that reaches its
 * limit. Any thread may use an instance and its parts; creating or destroying one with Root::OfProcess
 * changes the environment.
 */
class OZ_TESTING_EXPORT Phone : public PhoneParts
{
public:
    /*! Which programs see the phone. */
    enum class Root {
        OfProcess, //!< this process: the instance sets OZ_DEVICE_ROOT for its life
        Own, //!< only programs that are started with environment()
    };
    /*! The limit of waits that name no other. */
    static constexpr std::chrono::seconds DefaultLimit{5};

    /*! Starts a phone, and returns when everything is served. */
    explicit Phone(const PhoneSettings &settings = {}, Root root = Root::OfProcess);
    ~Phone();
    Phone(const Phone &) = delete;
    Phone &operator=(const Phone &) = delete;

    /*! Its device root. */
    [[nodiscard]] QString root() const;
    /*! This process's environment with the device root, for programs that should see this phone. */
    [[nodiscard]] QProcessEnvironment environment() const;
    /*! The ID of its services' process. */
    [[nodiscard]] qint64 processId() const;

    /*! Gives it the words of an order of `ozdevice sim`: {"battery", "level", "20"}. */
    void tell(const QStringList &words);
    /*! All orders since it started, in words, oldest first. */
    [[nodiscard]] QStringList orders() const;

    /*!
     * The published value that conditions of scenarios call by this name: "battery.level", "miracast.sinks".
     * A number, text, list, or true or false; invalid if it is unknown. docs/scenarios.md lists the names.
     */
    [[nodiscard]] QVariant value(const QString &name) const;
    /*! Whether a condition, as scenarios have it, holds now: "led.active and led.color == red". */
    [[nodiscard]] bool holds(const QString &condition) const;
    /*! Waits until a condition holds. */
    void waitFor(const QString &condition, std::chrono::milliseconds limit = DefaultLimit) const;

    /*! Waits until \a isTrue returns true, which may look at the application as well as at the phone. \a what
     * says in the error what was waited for. */
    void waitUntil(const std::function<bool()> &isTrue, std::chrono::milliseconds limit = DefaultLimit,
        const QString &what = {}) const;
    /*!
     * Waits until applications have handled everything that the phone was told so far, so that a test can
     * tell what they did not do: every thread that has an event loop and uses the phone, in this process and
     * in others, has returned from the slots that were called for it, and from what these posted. Not waited
     * for is what an application does after a time of its own, by a timer, or in a thread that does not use
     * the phone.
     */
    void waitUntilHandled(std::chrono::milliseconds limit = DefaultLimit) const;

    /*! The requests of applications since the phone started, or since forgetRequests(): up to 10,000, of all
     * kinds or of one. */
    [[nodiscard]] QList<PhoneRequest> requests(const QString &kind = {}) const;
    /*!
     * Waits until applications have sent \a count requests of a kind, including those before the call, and
     * returns them. \a with is a condition on their values, as in scenarios: "color == red and count == 2".
     */
    QList<PhoneRequest> waitForRequests(int count, const QString &kind, const QString &with = {},
        std::chrono::milliseconds limit = DefaultLimit) const;
    /*! As waitForRequests(), for the first one. */
    PhoneRequest waitForRequest(
        const QString &kind, const QString &with = {}, std::chrono::milliseconds limit = DefaultLimit) const
    {
        return waitForRequests(1, kind, with, limit).first();
    }
    /*! Ignores all requests so far. */
    void forgetRequests();

    /*! Checks the whole scenario in \a file and begins to play it. One scenario plays at a time. Returns at
     * once, even if the scenario waits for an application. */
    void play(const QString &file, const PlayOptions &options = {});
    /*! Whether a scenario plays, or waits for an application. */
    [[nodiscard]] bool isPlaying() const;
    /*! Waits until the scenario has been played; if a step failed, throws an error that names the first. */
    void waitUntilPlayed(std::chrono::milliseconds limit) const;
    /*! Ends the scenario. */
    void stopPlaying();

    /*! The log of the phone's services. */
    [[nodiscard]] QString log() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace oz::testing
