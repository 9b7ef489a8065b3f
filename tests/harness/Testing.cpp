#include "Testing.hpp"

#include "meta/MetaText.hpp"

#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMetaProperty>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <grp.h>
#include <linux/capability.h>
#include <linux/securebits.h>
#include <mutex>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

void PrintTo(const QByteArray &bytes, std::ostream *out)
{
    *out << '"' << bytes.toStdString() << '"';
}

void PrintTo(const QVariant &value, std::ostream *out)
{
    *out << (value.typeName() ? value.typeName() : "invalid") << ' '
         << oz::meta::valueText(value).toStdString();
}

namespace oz::harness {

namespace {
std::mutex s_mutex; // of what follows, as any thread logs
LogCapture *s_capture = nullptr;
} // namespace

// In memory where possible, as on a device.
DeviceRoot::DeviceRoot()
    : m_directory((QFileInfo("/dev/shm").isWritable() ? "/dev/shm" : QDir::tempPath()) + "/oz-test-XXXXXX"),
      m_before(qgetenv("OZ_DEVICE_ROOT"))
{
    qputenv("OZ_DEVICE_ROOT", QFile::encodeName(m_directory.path()));
    // Other users get in, see runWithoutRights().
    QFile::setPermissions(
        m_directory.path(), QFile::permissions(m_directory.path()) | QFile::ReadOther | QFile::ExeOther);
}

DeviceRoot::~DeviceRoot()
{
    m_before.isNull() ? qunsetenv("OZ_DEVICE_ROOT") : qputenv("OZ_DEVICE_ROOT", m_before);
}

QString DeviceRoot::file(const QString &path) const
{
    return m_directory.path() + path;
}

void DeviceRoot::place(const QString &path, const QByteArray &content) const
{
    const QString target = file(path);
    QDir().mkpath(QFileInfo(target).path());
    QFile made(target + QLatin1String(".placing"));
    ASSERT_TRUE(made.open(QIODevice::WriteOnly));
    ASSERT_EQ(made.write(content), content.size());
    made.close();
    ASSERT_EQ(
        std::rename(QFile::encodeName(made.fileName()).constData(), QFile::encodeName(target).constData()),
        0);
}

void DeviceRoot::remove(const QString &path) const
{
    ASSERT_TRUE(QFile::remove(file(path)));
}

uint DeviceRoot::mode(const QString &path) const
{
    struct stat status = {};
    EXPECT_EQ(::stat(QFile::encodeName(file(path)).constData(), &status), 0) << path.toStdString();
    return status.st_mode & 07777;
}

void DeviceRoot::setMode(const QString &path, uint mode) const
{
    ASSERT_EQ(::chmod(QFile::encodeName(file(path)).constData(), mode), 0);
}

LogCapture::LogCapture() : m_before(qInstallMessageHandler(&LogCapture::handle))
{
    const std::lock_guard lock(s_mutex);
    s_capture = this;
}

LogCapture::~LogCapture()
{
    {
        const std::lock_guard lock(s_mutex);
        s_capture = nullptr;
    }
    qInstallMessageHandler(m_before);
}

QStringList LogCapture::take()
{
    const std::lock_guard lock(s_mutex);
    return std::exchange(m_warnings, {});
}

QStringList LogCapture::categories() const
{
    const std::lock_guard lock(s_mutex);
    return m_categories;
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const std::lock_guard lock(s_mutex);
    if (type == QtWarningMsg && s_capture) {
        s_capture->m_warnings.append(text);
        s_capture->m_categories.append(QLatin1String(context.category));
    }
}

SignalLog::SignalLog(QObject *sender)
    : m_tap(sender, [this](const QMetaMethod &signal, const QVariantList &arguments) {
          QStringList texts;
          for (const QVariant &argument : arguments)
              texts.append(meta::valueText(argument));
          QByteArray name = signal.name();
          if (name.endsWith("Changed"))
              name.chop(qstrlen("Changed"));
          m_heard.append(QString::fromLatin1(name) + u'(' + texts.join(QLatin1String(", ")) + u')');
      })
{
}

QString SignalLog::take()
{
    return std::exchange(m_heard, {}).join(u' ');
}

QString SignalLog::waitFor(qsizetype count)
{
    EXPECT_TRUE(waitUntil([&] { return m_heard.size() >= count; })) << "fewer than " << count << " signals";
    return settled();
}

QString SignalLog::settled()
{
    settle();
    return take();
}

QString valuesOf(const QObject &object)
{
    QStringList values;
    const QMetaObject *type = object.metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        values.append(QLatin1String(property.name()) + u'=' + meta::valueText(property.read(&object)));
    }
    return values.join(u' ');
}

bool waitUntil(const std::function<bool()> &condition, int milliseconds)
{
    return QTest::qWaitFor(condition, milliseconds);
}

void awaitBlocked(pid_t thread)
{
    // The state follows the name, which stands in brackets.
    const auto isBlocked = [thread] {
        QFile stat(QStringLiteral("/proc/self/task/%1/stat").arg(thread));
        return stat.open(QIODevice::ReadOnly) && stat.readAll().contains(") S ");
    };
    for (int tries = 0; tries < 20'000 && !isBlocked(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(isBlocked());
}

namespace {

int runInChild(const std::function<bool()> &prepare, const std::function<int()> &body)
{
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            ::_exit(::geteuid() != 0 || prepare() ? body() : 255);
        } catch (...) { // it must not lead the child back into the test program
            ::_exit(255);
        }
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 255);
    return WEXITSTATUS(status);
}

} // namespace

int runWithoutRights(const std::function<int()> &body, uid_t user)
{
    return runInChild(
        [user] {
            return ::setgroups(0, nullptr) == 0 && ::setresgid(user, user, user) == 0
                && ::setresuid(user, user, user) == 0;
        },
        body);
}

int openErrorWithoutRights(const QString &path, PpsOpenMode::Types mode)
{
    return runWithoutRights([&] {
        PpsObject object(path);
        return object.open(mode) ? 0 : object.error();
    });
}

int runWithoutPrivileges(const std::function<int()> &body)
{
    return runInChild(
        [] {
            __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
            const __user_cap_data_struct none[2] = {};
            return ::prctl(PR_SET_SECUREBITS, SECBIT_NOROOT) == 0
                && ::syscall(SYS_capset, &header, none) == 0;
        },
        body);
}

void settle()
{
    // A change of an object of our own comes through the same queue as all that was published before it.
    static int s_round = 0;
    const QString path = QStringLiteral("/pps/testing/settle");
    PpsPublisher publisher(path);
    ASSERT_TRUE(publisher.publish({{QStringLiteral("round"), ++s_round}}))
        << publisher.errorString().toStdString();
    PpsObject object(path);
    bool heard = false;
    QObject::connect(&object, &PpsObject::readyRead, [&] { heard = true; });
    ASSERT_TRUE(object.open(PpsOpenMode::Subscribe));
    (void)object.read();
    QCoreApplication::processEvents();
    heard = false;
    ASSERT_TRUE(publisher.publish({{QStringLiteral("round"), ++s_round}}));
    ASSERT_TRUE(waitUntil([&] { return heard; }));
    QCoreApplication::processEvents();
}

QVariantMap attributesOf(const QString &path)
{
    PpsObject object(path);
    bool ok = false;
    EXPECT_TRUE(object.open(PpsOpenMode::Subscribe)) << object.errorString().toStdString();
    const QVariantMap message = PpsObject::decode(object.read(), &ok);
    EXPECT_TRUE(ok) << path.toStdString();
    return message.isEmpty() ? QVariantMap() : message.first().toMap();
}

NoFreeDescriptors::NoFreeDescriptors()
{
    const int lowestFree = ::dup(STDERR_FILENO);
    ::close(lowestFree);
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &m_before), 0);
    const rlimit none{rlim_t(lowestFree), m_before.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
}

void NoFreeDescriptors::lift()
{
    ::setrlimit(RLIMIT_NOFILE, &m_before);
}

qsizetype openDescriptors(qint64 process)
{
    const QString owner = process ? QString::number(process) : QStringLiteral("self");
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(owner));
    return descriptors.entryList(QDir::Files | QDir::System).size();
}

PostedCalls::PostedCalls()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool PostedCalls::eventFilter(QObject *, QEvent *event)
{
    m_delivered += event->type() == QEvent::MetaCall;
    return false;
}

bool endsWithSignal(qsizetype last, QObject *object, const std::function<void()> &act)
{
    qsizetype heard = 0;
    const meta::SignalTap tap(object, [&](const QMetaMethod &, const QVariantList &) {
        if (++heard == last)
            delete std::exchange(object, nullptr);
    });
    act();
    const bool ended = waitUntil([&] { return !object; });
    settle();
    delete object;
    return ended && heard == last;
}

} // namespace oz::harness
