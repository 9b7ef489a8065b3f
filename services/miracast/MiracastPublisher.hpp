#pragma once

#include "miracast/Miracast.hpp"
#include "publishing/Publisher.hpp"

#include <QHash>
#include <QQueue>
#include <QTimer>

namespace oz::services {

/*!
 * The wireless-display service. It publishes "/pps/services/miracast/status" and
 * "/pps/services/miracast/sinks", and serves "/pps/services/miracast/control", whose requests
 * "miracast_sink_discover", "miracast_session_start", "miracast_session_stop", "miracast_session_pause",
 * "miracast_session_resume", "miracast_shutdown" and "miracast_app_context" are answered in the status:
 * "last_request_id", "last_request" and "last_request_err".
 *
 * All clients share that one place for answers, and hear of what changes in it. So each answer stands there
 * for a while, longer where no other waits, and is then taken back for a while before the next one comes: a
 * client that reads within either time sees its own answer, whole, also where it says the same as the one
 * before. Users have their answers in turn, however many one of them waits for.
 */
class MiracastPublisher final : public PublisherOf<MiracastSource>
{
public:
    /*! How long an answer stands where others wait, and how long its place is empty before the next one. */
    static constexpr std::chrono::milliseconds AnswerTime{100};
    /*! How long an answer stands where no other waits. */
    static constexpr std::chrono::milliseconds LoneAnswerTime{1000};

    MiracastPublisher(const QString &facility, MiracastSource &source, Tree &tree);
    ~MiracastPublisher() override;

    [[nodiscard]] FaultsByInstance faults() override { return {{QString(), &m_faults}}; }

private:
    class Control;
    using Result = MiracastSource::Result;

    struct Answer
    {
        QString id;
        QString message;
        int code = 0;
        PpsServer::Client client;
    };

    void publishState(const MiracastState &state) override;
    void publishAbsence() override;
    void publishStatus();
    [[nodiscard]] RequestTable requests();
    /*! True if the client may have one more request. */
    [[nodiscard]] bool admit(const PpsServer::Client &client);
    void dismiss(const PpsServer::Client &client);
    void onRequest(const Request &request, bool isMalformed);
    void handle(const Request &request);
    void answer(const Request &request, int code);
    void turn();
    [[nodiscard]] Answer takeAnswer();

    QVariantMap m_told; // the status without answers
    StatePublisher m_status;
    StatePublisher m_sinks;
    RequestTable m_requests;
    Faults m_faults;
    std::unique_ptr<Control> m_control;
    QHash<pid_t, int> m_openOfProcess; // requests that wait for their answers to stand
    QHash<uid_t, int> m_openOfUser;
    std::map<uid_t, QQueue<Answer>> m_answers; // that have not stood yet, by the users who wait for them
    uid_t m_lastAnswered = 0;
    std::optional<Answer> m_standing;
    QTimer m_turn;
};

} // namespace oz::services
