#include "miracast/MiracastRecorder.hpp"

#include "miracast/Miracast.hpp"

namespace oz::services {

namespace {

const QString Section = QStringLiteral("miracast");

QString text(const QVariantMap &map, const char *key)
{
    return map.value(QLatin1String(key)).toString();
}

} // namespace

void MiracastRecorder::sample(RecordedScript &script, const QStringList &)
{
    const QVariantMap status = script.told(miracastFields().path());
    if (!status.contains(QStringLiteral("service_status")))
        return;
    Seen now;
    if (text(status, "service_status") == u"STOPPED")
        now.stop = std::max(text(status, "service_stop_reason").toInt(), 1);
    const auto noteSink = [&](const QVariantMap &sink) {
        return m_sinks.note(script, text(sink, "mac"), sink);
    };
    for (const QVariant &sink : script.told(sinkFields().path()))
        now.visible.append(noteSink(sink.toMap()));
    const QString state = text(status, "sink_state");
    if (state != u"DISCONNECTED") {
        const QString name = noteSink(status.value(QStringLiteral("sink_device")).toMap());
        (state == u"CONNECTING" ? now.connecting : now.sink) = name;
    }
    now.isPaused = text(status, "session") == u"PAUSED";
    const QVariantMap size = status.value(QStringLiteral("sink_resolution")).toMap();
    if (!now.sink.isEmpty() && size.value(QStringLiteral("width")).toInt() > 0 && now.sink != m_before.sink) {
        QVariantMap sink = m_sinks.of(now.sink);
        sink.insert(size);
        m_sinks.set(now.sink, sink);
    }
    script.setInPhone(Section, QStringLiteral("sinks"), m_sinks.all());
    orderChanges(script, now);
    m_before = now;
}

void MiracastRecorder::orderChanges(RecordedScript &script, const Seen &now)
{
    const QString session = QStringLiteral("session");
    if (now.stop != m_before.stop && now.stop != 0) {
        script.order({Section, QStringLiteral("stop"), QString::number(now.stop)});
        // Stopping ends every connection.
        m_before.sink.clear();
        m_before.connecting.clear();
    } else if (now.stop != m_before.stop) {
        script.order({Section, QStringLiteral("start")});
    }
    if (now.visible != m_before.visible) {
        script.order(QStringList{Section, QStringLiteral("sight")}
            + (now.visible.isEmpty() ? QStringList() : QStringList{now.visible.join(u',')}));
    }
    const bool isOther = now.sink != m_before.sink || now.connecting != m_before.connecting;
    if (!now.sink.isEmpty() && (isOther || now.isPaused != m_before.isPaused)) {
        script.order({Section, session, now.isPaused ? QStringLiteral("paused") : QStringLiteral("playing"),
            now.sink});
    } else if (isOther && !now.connecting.isEmpty()) {
        script.order({Section, QStringLiteral("connecting"), now.connecting});
    } else if (isOther) {
        script.order({Section, session, QStringLiteral("none")});
    }
}

} // namespace oz::services
