#pragma once

#include "Arguments.hpp"
#include "facilities/InstalledScenarios.hpp"
#include "ozdevice/EventLoop.hpp"

#include <oz/client/ScenarioFollower.hpp>

#include <QObject>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <vector>

namespace oz::tools {

using arguments::Verb;

/*! How a scenario is to be played, as verbs are told it. */
struct ScenarioOptions
{
    std::string scenario;
    std::string speed;
    std::optional<quint32> seed;
    bool keepGoing = false;
    std::vector<std::string> variables; //!< NAME=VALUE
    std::string junit;
    bool json = false;
    bool quiet = false; //!< prints nothing
    std::string waitFor; //!< what an application does before it begins: "open" or "request"; nothing else
    double waitLimit = 10; //!< seconds, after which it begins anyway

    [[nodiscard]] bool waits() const { return waitFor == "open" || waitFor == "request"; }
    /*! All but the scenario's own name; the options. */
    std::vector<arguments::Option> addTo(const Verb &verb);
};

/*! A scenario that the daemon plays, followed to its end: each step is printed, and a report written. */
class PlayedScenario : public QObject
{
    Q_OBJECT

public:
    /*! Problems end \a loop. */
    PlayedScenario(const ScenarioOptions &options, EventLoop &loop);

    /*! Has the whole file checked, without playing it; throws CommandError with what is wrong. What it says
     * of itself. */
    QVariantMap check() const;
    /*! Has it played; throws as check(). */
    void play();
    /*! Ends it, where it is still playing. */
    void stop();

    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    /*! Whether it began; one that waits for the application plays before it begins. */
    [[nodiscard]] bool hasBegun() const { return m_hasBegun; }
    [[nodiscard]] bool hasExpectations() const { return m_hasExpectations; }
    [[nodiscard]] bool hasPassed() const { return m_state == u"passed"; }
    /*! Whether it was ended before it was over. */
    [[nodiscard]] bool wasStopped() const { return m_state == u"stopped"; }
    /*! Which step failed, or why it was stopped; empty where all is well. */
    [[nodiscard]] const QString &problem() const { return m_problem; }

Q_SIGNALS:
    /*! What the scenario says. */
    void said(const QString &text);
    /*! It has begun, of which it says on standard error where no application came for it. */
    void begun();
    void finished();

private:
    [[nodiscard]] QVariantMap order() const;
    void take(const QVariantMap &told);
    [[nodiscard]] QString absenceText() const;
    void print(const QVariantMap &entry) const;
    void writeReport() const;

    const ScenarioOptions &m_options;
    EventLoop &m_loop;
    QString m_file;
    std::unique_ptr<client::ScenarioFollower> m_follower; // while it plays
    bool m_isPlaying = false;
    bool m_hasBegun = false;
    bool m_hasExpectations = false;
    QString m_state;
    QString m_problem;
    QVariantList m_entries; // for the report
};

} // namespace oz::tools
