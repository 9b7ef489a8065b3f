#pragma once

#include "miracast/Miracast.hpp"
#include "phone/Surroundings.hpp"

namespace oz::services {

class SimulatedDisplays;
class SimulatedHardware;

/*!
 * The phone's wireless displays: the section "miracast". While one is connected it is among the displays,
 * too; when that is taken away the session ends.
 */
class SimulatedMiracast final : public MiracastSource, public PartOfTable<SimulatedMiracast>
{
public:
    SimulatedMiracast(const JsonNode &section, SimulatedParts &phone);

    [[nodiscard]] static const Settings<SimulatedMiracast> &table();
    [[nodiscard]] static InstanceSettings instanceSettings()
    {
        return {QStringLiteral("sinks"), Known::table().of(nullptr)};
    }
    [[nodiscard]] std::vector<SimVerb> verbs(const QString &instance) override;
    [[nodiscard]] Neighbourhood neighbourhood() const override;
    [[nodiscard]] QVariantMap saved() override;
    void restore(const QVariantMap &saved) override;

    void scan(const Done &done) override;
    void connectSink(const QString &address, const QString &pin, const Done &done) override;
    void disconnectSink(const Done &done) override;
    void pause(const Done &done) override;
    void resume(const Done &done) override;
    void shutdown(const Done &done) override;
    void warmUp(const MiracastState::Application &application, const Done &done) override;

private:
    struct Known
    {
        MiracastState::Sink sink;
        bool inRange = true;
        bool accepts = true;
        QString pin; // empty for none
        int width = 0; // pixels
        int height = 0;

        [[nodiscard]] static const Settings<Known> &table();
        [[nodiscard]] const QString &name() const { return sink.name; }
        [[nodiscard]] const QString &address() const { return sink.address; }
        [[nodiscard]] QSize size() const { return {width, height}; }
    };
    // The connection that is being made.
    struct Attempt
    {
        QString key;
        QString pin;
        Done done;
    };
    struct Running
    {
        QString key;
        QString id;
        int display = 0;
        bool paused = false;
    };

    void see(const QStringList &keys);
    void enterSession(const QString &word, const QString &key);
    void beginSession(const QString &key);
    [[nodiscard]] QString visibleAt(const QString &address) const;
    [[nodiscard]] Result obstacle() const;
    void wake();
    void finishScan();
    void finishConnecting();
    void setPaused(bool paused, const Done &done);
    [[nodiscard]] bool endConnection(Result result);
    void stop(MiracastState::Stop reason, int wiFiFailure);
    void tell();
    void onDisplaysChanged();

    std::shared_ptr<SimulatedDisplays> m_displays;
    bool m_supported = true;
    std::chrono::milliseconds m_scanTime{};
    std::chrono::milliseconds m_connectTime{};
    Surroundings<Known> m_sinks;

    MiracastState::Stop m_stop;
    int m_wiFiFailure = 0;
    std::optional<MiracastState::Application> m_application;
    QStringList m_visible;
    PhoneTimer m_scanning;
    QList<Done> m_scans; // that wait for the end of the one that runs
    PhoneTimer m_connecting;
    std::optional<Attempt> m_attempt;
    std::optional<Running> m_session;
};

} // namespace oz::services
