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

/*! The options of the verbs that play a scenario. */
struct ScenarioOptions
{
    std::string scenario;
    std::string speed;
    std::optional<quint32> seed;
    bool keepGoing = false;
    std::vector<std::string> variables; //!< NAME=VALUE
    std::string junit;
    bool json = false;
    bool quiet = false; //!< print nothing
    std::string waitFor; //!< "open" or "request": begin when the application does this; otherwise at once
    double waitLimit = 10; //!< seconds until the scenario begins in any case

    [[nodiscard]] bool waits() const { return waitFor == "open" || waitFor == "request"; }
    /*! Adds all options but the scenario itself, and returns them. */
    std::vector<arguments::Option> addTo(const Verb &verb);
};

/*! Plays a scenario on the daemon and follows it to its end: prints each step, and writes a report. */
class PlayedScenario : public QObject
{
    Q_OBJECT

public:
    /*! Errors end \a loop. */
    PlayedScenario(const ScenarioOptions &options, EventLoop &loop);

    /*! Checks the whole file without playing it, and returns its description. Throws CommandError with
     * what is wrong. */
    QVariantMap check() const;
    /*! Starts the scenario; throws as check() does. */
    void play();
    /*! Ends the scenario if it is still playing. */
    void stop();

    [[nodiscard]] bool isPlaying() const { return m_isPlaying; }
    /*! Returns whether it has begun; while it waits for the application, it is playing but has not begun. */
    [[nodiscard]] bool hasBegun() const { return m_hasBegun; }
    [[nodiscard]] bool hasExpectations() const { return m_hasExpectations; }
    [[nodiscard]] bool hasPassed() const { return m_state == u"passed"; }
    /*! Returns whether it was stopped before its end. */
    [[nodiscard]] bool wasStopped() const { return m_state == u"stopped"; }
    /*! The step that failed, or the reason why it was stopped; empty otherwise. */
    [[nodiscard]] const QString &problem() const { return m_problem; }

Q_SIGNALS:
    /*! The scenario says \a text. */
    void said(const QString &text);
    /*! It has begun. If no application came in time, an error has been printed. */
    void begun();
    void finished();

private:
    [[nodiscard]] QVariantMap order() const;
    void onNews(const QVariantMap &told);
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
