#pragma once

#include "harness/Process.hpp"
#include "harness/Testing.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/DisplayInfo.hpp>

namespace oz::harness {

/*! A client of a control object that keeps its connection and hears the answers. */
class ControlClient : public PpsObject
{
public:
    explicit ControlClient(const QString &path);
    QByteArray ask(const QByteArray &request);
};

/*! The attributes of the answer to a request, for which the event loop runs. */
QVariantMap ask(const QString &path, const QVariantMap &request);

/*! The data of the daemon's answer, for which the event loop runs; throws client::DaemonError. */
QVariantMap askDaemon(const QString &request, const QVariant &data = {});
/*! The error of such a request; empty where it succeeds. */
QString daemonProblem(const QString &request, const QVariant &data = {});

/*! Tells the phone what `ozdevice sim` would. */
void sim(const QString &line);
/*! The error of telling the phone that; empty where it succeeds. */
QString simProblem(const QString &line);

/*! Ends the recording, and gives it as a scenario. */
QByteArray endRecording();

/*!
 * Plays the steps of a recording one after the other, with \a catchUp after each: of what follows at once,
 * applications hear the end alone.
 */
void playStepByStep(const QString &file, const std::function<void()> &catchUp);

/*! settle(), and until \a display, which a thread of the platform's reads, is as the tree says. */
void settleDisplay(const device::DisplayInfo &display);

/*!
 * A test with services in a process of their own, so that requests which wait are answered. They log nothing
 * but that they serve.
 */
class ServicesTest : public DeviceTest
{
protected:
    explicit ServicesTest(const QByteArray &phoneFile) : m_phoneFile(phoneFile) { }
    void SetUp() override;
    void TearDown() override;
    /*! Starts the daemon, and waits until everything is published. */
    void start(const QStringList &furtherArguments = {});

    QProcess daemon;

private:
    QByteArray m_phoneFile;
};

} // namespace oz::harness
