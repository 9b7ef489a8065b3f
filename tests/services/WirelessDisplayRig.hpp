#pragma once

#include "services/Rigs.hpp"

namespace oz::harness {

/*! A stand-in for ozcast, which says what its script has it say, beside one for Avahi. */
class WirelessDisplayRig final : public BusRig
{
public:
    static constexpr const char *Sink = "10.0.0.2"; //!< of the options unless they are others

    /*! With \a options of the daemon's source beside the program. */
    explicit WirelessDisplayRig(const QString &options = OneSink);
    [[nodiscard]] QProcessEnvironment environment() const override;
    void start() override;
    void stop() override;
    void stall(bool stalls) override;
    /*! The encoder is removed, or installed. */
    void change(bool there) override;

    /*! Has ozcast say \a json from now on, see scripts/ozcast; as it is until then. */
    void script(const QByteArray &json);
    /*! The lines that ozcast has read since the last call. */
    QByteArrayList heard();
    /*! The process of ozcast; 0 before the first. */
    [[nodiscard]] pid_t caster() const;
    /*! Runs an ozcast of somebody's own, who is a user without rights if \a isStranger. */
    void runCaster(Process *process, const QString &deviceRoot, bool isStranger);

    /*! A device of the network tells of a display. */
    void announce(const QString &name, const QString &address, int port, const QString &text = {}) const;
    [[nodiscard]] QString searches() const;
    /*! Somebody's session becomes the active one of the seat. */
    void login(int user);

private:
    static constexpr const char *OneSink = "sink=10.0.0.2 mdns=off connect-seconds=0.3";
    [[nodiscard]] QString file(const QString &name = {}) const { return m_folder.filePath("script") + name; }

    QTemporaryDir m_folder;
    Process m_logind;
    qint64 m_read = 0; // bytes of what was heard
};

} // namespace oz::harness
