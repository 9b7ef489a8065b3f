#pragma once

#include "harness/Testing.hpp"

#include <oz/device/MiracastManager.hpp>

#include <QRegularExpression>

#include <functional>

namespace oz::harness {

using Request = std::function<void(device::MiracastManager &)>;

inline Request connectTo(const QString &address, const QString &pin = {})
{
    return [=](device::MiracastManager &miracast) { miracast.requestConnect(address, pin); };
}
inline const Request Scan = &device::MiracastManager::requestScan;
inline const Request Disconnect = &device::MiracastManager::requestDisconnect;
inline const Request Pause = &device::MiracastManager::requestPause;
inline const Request Resume = &device::MiracastManager::requestResume;
inline const Request Shutdown = &device::MiracastManager::requestShutdown;

/*! An instance, and how its requests were completed. */
struct MiracastClient
{
    void ask(const Request &request) { request(miracast); }
    [[nodiscard]] QStringList completions()
    {
        static const QRegularExpression completion("(\\w+)Completed\\(([A-Z]\\w+)\\)");
        QStringList found;
        for (const auto &match : completion.globalMatch(heard.take()))
            found.append(match.captured(1) + " " + match.captured(2));
        return found;
    }
    /*! The signals of a request, without the numeric twins and the session's own number. */
    QString after(const Request &request)
    {
        static const QRegularExpression repeated(R"((\w+\((?:"[^"]*", )*\d+[^x)]*\)) ?)");
        static const QRegularExpression session("sessionId\\(\"[0-9a-f-]+\"\\)");
        QString signalled;
        request(miracast);
        EXPECT_TRUE(waitUntil([&] { return (signalled += heard.take() + ' ').contains("Completed("); }));
        return signalled.replace(session, "sessionId(ID)").remove(repeated).simplified();
    }
    QString resultOf(const Request &request)
    {
        return after(request).section("Completed(", 1).section(')', 0, 0);
    }

    device::MiracastManager miracast;
    SignalLog heard{&miracast};
};

} // namespace oz::harness
