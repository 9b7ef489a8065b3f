#include "services/WirelessDisplayRig.hpp"

#include <QFile>
#include <QSaveFile>

#include <csignal>

namespace oz::harness {

namespace {
const QString Caster = QString(OZ_RIG_SCRIPTS) + "/ozcast";
} // namespace

WirelessDisplayRig::WirelessDisplayRig(const QString &options)
    : BusRig("miracast=wireless-display " + options
            + (options.contains("caster=") ? QString() : " caster=" + Caster),
        "org.freedesktop.Avahi",
        {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template",
            QString(OZ_RIG_SCRIPTS) + "/avahi.py"},
        {})
{
    script("{}");
}

QProcessEnvironment WirelessDisplayRig::environment() const
{
    QProcessEnvironment environment = BusRig::environment();
    environment.insert("OZ_CAST_SCRIPT", file());
    return environment;
}

void WirelessDisplayRig::start()
{
    if (!QFile::remove(file(".gone")))
        BusRig::start();
}

void WirelessDisplayRig::stop()
{
    QFile gone(file(".gone"));
    EXPECT_TRUE(gone.open(QIODevice::WriteOnly));
    EXPECT_EQ(::kill(caster(), SIGKILL), 0);
}

void WirelessDisplayRig::stall(bool stalls)
{
    EXPECT_EQ(::kill(caster(), stalls ? SIGSTOP : SIGCONT), 0);
}

void WirelessDisplayRig::change(bool there)
{
    script(there ? R"({"hello": {"encoder": "", "missing": "x264enc of gstreamer1.0-plugins-ugly"}})" : "{}");
}

void WirelessDisplayRig::script(const QByteArray &json)
{
    QSaveFile output(file());
    EXPECT_TRUE(output.open(QIODevice::WriteOnly) && output.write(json) == json.size());
    output.setPermissions(output.permissions() | QFile::ReadOther);
    EXPECT_TRUE(output.commit());
}

QByteArrayList WirelessDisplayRig::heard()
{
    QFile input(file(".heard"));
    if (!input.open(QIODevice::ReadOnly) || !input.seek(m_read))
        return {};
    const QByteArray lines = input.readAll();
    m_read += lines.size();
    return lines.trimmed().split('\n');
}

pid_t WirelessDisplayRig::caster() const
{
    QFile input(file(".pid"));
    return input.open(QIODevice::ReadOnly) ? input.readAll().toInt() : 0;
}

void WirelessDisplayRig::runCaster(Process *process, const QString &deviceRoot, bool isStranger)
{
    QProcessEnvironment variables = environment();
    variables.remove("LD_PRELOAD");
    variables.insert("OZ_DEVICE_ROOT", deviceRoot);
    // A stranger may not read where the tests are.
    const QString copy = m_folder.filePath("ozcast");
    if (!QFile::exists(copy)) {
        EXPECT_TRUE(QFile::copy(Caster, copy));
    }
    if (isStranger)
        giveToNobody(m_folder.path());
    const QStringList program{"/usr/bin/python3", copy};
    const QStringList words = isStranger ? asNobody(program) : program;
    process->run(words.first(), words.mid(1), variables);
}

void WirelessDisplayRig::announce(
    const QString &name, const QString &address, int port, const QString &text) const
{
    const QString texts = text.isEmpty() ? "@as []" : "['container_id=1', '" + text + "']";
    (void)call({"/", "oz.Network.Announce", name, address, QString::number(port), texts});
}

QString WirelessDisplayRig::searches() const
{
    return call({"/", "oz.Network.Searches"}).trimmed();
}

void WirelessDisplayRig::login(int user)
{
    const QString logind = "org.freedesktop.login1";
    if (m_logind.state() == QProcess::NotRunning) {
        runOnBus(
            &m_logind, {"/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"}, logind);
    }
    const QString number = QString::number(user);
    call({"/org/freedesktop/login1", "org.freedesktop.DBus.Mock.AddSession", "c" + number, "seat0", number,
             "user" + number, "true"},
        logind);
    call({"/org/freedesktop/login1", "org.freedesktop.DBus.Mock.EmitSignal", logind + ".Manager", "SeatNew",
             "so", "[<'seat0'>, <objectpath '/org/freedesktop/login1/seat/seat0'>]"},
        logind);
}

} // namespace oz::harness
