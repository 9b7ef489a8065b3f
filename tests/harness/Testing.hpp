#pragma once

#include "meta/SignalTap.hpp"

#include <oz/PpsOpenMode.hpp>

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <sys/resource.h>
#include <tuple>

// Lets GoogleTest print Qt's types in a failure.
void PrintTo(const QString &text, std::ostream *out);
void PrintTo(const QByteArray &bytes, std::ostream *out);
void PrintTo(const QVariant &value, std::ostream *out);

namespace oz::harness {

/*! A device root of the test's own, in force for the life of the instance. */
class DeviceRoot
{
public:
    DeviceRoot();
    ~DeviceRoot();

    /*! The file of the device path \a path. */
    [[nodiscard]] QString file(const QString &path) const;
    /*! Puts \a content at \a path in one step, past every check, as a broken publisher might. */
    void place(const QString &path, const QByteArray &content) const;
    void remove(const QString &path) const;
    /*! The permission bits of \a path. */
    [[nodiscard]] uint mode(const QString &path) const;
    void setMode(const QString &path, uint mode) const;

private:
    QTemporaryDir m_directory;
    QByteArray m_before;
};

/*! The warnings that were logged for the life of the instance, instead of their output. */
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    /*! The warnings since the last call. */
    QStringList take();
    /*! The categories of those warnings, in their order. */
    [[nodiscard]] QStringList categories() const;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);
    QtMessageHandler m_before;
    QStringList m_warnings;
    QStringList m_categories;
};

/*! A test on a device root of its own, where only the warnings that it takes may be logged. */
class DeviceTest : public ::testing::Test
{
protected:
    ~DeviceTest() override { EXPECT_EQ(log.take(), QStringList()); }

    LogCapture log;
    DeviceRoot root;
};

/*!
 * The signals of one object in the order of emission, as "state(Mounted) state(1)": without the "Changed"
 * that a name ends with, and with values as text.
 */
class SignalLog
{
public:
    explicit SignalLog(QObject *sender);
    /*! The signals since the last call. */
    QString take();
    /*! take() once at least \a count signals came; fails the test where they do not. */
    QString waitFor(qsizetype count);
    /*! take() once everything that is under way has been delivered. */
    QString settled();

private:
    QStringList m_heard;
    meta::SignalTap m_tap;
};

/*! All properties that the classes of \a object below QObject declare: "name=value name=value". */
[[nodiscard]] QString valuesOf(const QObject &object);

/*! Runs the event loop until \a condition holds; false where it does not within the deadline. */
[[nodiscard]] bool waitUntil(const std::function<bool()> &condition, int milliseconds = 20'000);

/*! Waits until another thread of this process sleeps in the kernel. */
void awaitBlocked(pid_t thread);

/*!
 * The result of \a body (0 to 254) in a child process without any rights to what is not for everybody: one
 * that root runs becomes the user \a user first.
 */
[[nodiscard]] int runWithoutRights(const std::function<int()> &body, uid_t user = 65534);

/*! The errno (0 for none) of opening the object at \a path in such a process. */
[[nodiscard]] int openErrorWithoutRights(const QString &path, PpsOpenMode::Types mode);

/*! As runWithoutRights(), but the same user without what root may do beyond file modes, also in programs that
 * it starts.
 */
[[nodiscard]] int runWithoutPrivileges(const std::function<int()> &body);

/*! Runs the event loop until everything that is under way now has been delivered. */
void settle();

/*! The attributes of the state object at \a path. */
[[nodiscard]] QVariantMap attributesOf(const QString &path);

/*! This process opens no descriptor for the life of the instance. */
class NoFreeDescriptors
{
public:
    NoFreeDescriptors();
    ~NoFreeDescriptors() { lift(); }
    void lift();

private:
    rlimit m_before{};
};

/*! How many descriptors a process has open; this one where \a process is 0. */
[[nodiscard]] qsizetype openDescriptors(qint64 process = 0);

/*! Counts the calls that were posted to objects of this thread, as they are delivered. */
class PostedCalls : private QObject
{
public:
    PostedCalls();
    [[nodiscard]] int delivered() const { return m_delivered; }

private:
    bool eventFilter(QObject *object, QEvent *event) override;
    int m_delivered = 0;
};

/*!
 * True if \a act makes \a object emit so many signals, and nothing follows when a slot of the last destroys
 * it.
 */
[[nodiscard]] bool endsWithSignal(qsizetype last, QObject *object, const std::function<void()> &act);

} // namespace oz::harness
