#pragma once

#include "Elements.hpp"
#include "VideoFormats.hpp"

#include <QHostAddress>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>

#include <gst/gst.h>

namespace oz::cast {

/*! What is sent, and where to. */
struct PipelinePlan
{
    QString picture; //!< the beginning of the pipeline, which gives raw video at the rate of the mode
    VideoChoice video;
    Elements elements;
    bool hasAudio = false;
    QHostAddress display;
    quint16 port = 0;
    int socket = -1; //!< from which it is sent
    std::chrono::milliseconds limit{6000}; //!< for a start, a pause or a resumption
    /*! Called with the pipeline before it starts, from another thread. */
    std::function<void(GstElement *pipeline)> onBuilt = {};
};

/*!
 * Takes, encodes and sends picture and sound. Its states change in a thread of its own, because a screen that
 * does not answer holds such a change up, and for as long as it likes. For the same reason it is never ended:
 * its process is.
 */
class Pipeline : public QObject
{
    Q_OBJECT

public:
    explicit Pipeline(const PipelinePlan &plan);

    /*! Begins, or goes on, with a key frame. */
    void play();
    void pause();
    void wantKeyFrame();

    /*! The whole of it, as gst-launch-1.0 takes it. */
    [[nodiscard]] static QString description(const PipelinePlan &plan);

Q_SIGNALS:
    /*! The first packet since play() goes out. */
    void sending();
    void paused();
    void failed(const QString &reason);

private:
    void inThread(const std::function<void()> &act);
    void build();
    void setState(GstState state);
    void fail(const QString &reason);
    static GstBusSyncReply onMessage(GstBus *bus, GstMessage *message, gpointer self);
    static GstPadProbeReturn onPacket(GstPad *pad, GstPadProbeInfo *info, gpointer self);

    const PipelinePlan m_plan;
    QThread m_thread;
    QObject *m_inThread;
    QTimer m_limit;
    GstElement *m_pipeline = nullptr; // of the thread
    std::atomic<bool> m_awaitsPacket = false;
    bool m_hasFailed = false;
};

} // namespace oz::cast
