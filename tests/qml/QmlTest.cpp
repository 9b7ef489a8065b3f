// Runs each file of QML tests with a private phone, and the panel and the examples.

#include "services/Services.hpp"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QRegularExpression>
#include <QtQuickTest/quicktest.h>

#include <csignal>

using namespace oz;
using namespace oz::harness;

namespace {

const QByteArray PhoneFile = R"({
    "wifi-direct": {"scan-seconds": 0.2, "connect-seconds": 0.1},
    "miracast": {"scan-seconds": 0.2, "connect-seconds": 0.1}})";

/*! The phone that tests control as `phone` in QML. */
class Phone : public QObject
{
    Q_OBJECT

public:
    Phone(const QProcess *daemon, DeviceRoot *root) : m_daemon(daemon), m_root(root) { }
    /*! Sends an order; returns why it failed, or an empty text. */
    Q_INVOKABLE QString sim(const QString &line) { return simProblem(line); }
    /*! Plays a scenario; returns why that failed, or an empty text. */
    Q_INVOKABLE QString play(const QString &text, const QString &speed = "1")
    {
        m_root->place("/s.json", text.toUtf8());
        return daemonProblem("play", QVariantMap{{"file", m_root->file("/s.json")}, {"speed", speed}});
    }
    Q_INVOKABLE [[nodiscard]] QString file(const QString &name) const { return m_root->file(name); }
    Q_INVOKABLE [[nodiscard]] QString read(const QString &name) const
    {
        QFile content(file(name));
        return content.open(QIODevice::ReadOnly) ? QString::fromUtf8(content.readAll()) : QString();
    }
    Q_INVOKABLE [[nodiscard]] bool isRecording() const { return daemonProblem("recorded").isEmpty(); }
    Q_INVOKABLE void stall() { send(SIGSTOP); }
    Q_INVOKABLE void goOn() { send(SIGCONT); }

public Q_SLOTS:
    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->rootContext()->setContextProperty(QStringLiteral("phone"), this);
    }

private:
    void send(int signal) const { ::kill(pid_t(m_daemon->processId()), signal); }
    const QProcess *m_daemon;
    DeviceRoot *m_root;
};

// Runs the tests of a file; returns the number of failures.
int failures(const QString &name, QObject *setup)
{
    const QByteArray file = QByteArray(OZ_QML_TESTS "/tst_") + name.toUtf8() + ".qml";
    QByteArrayList words{"qml_test", "-input", file, "-import", OZ_QML_MODULES};
    QList<char *> arguments;
    for (QByteArray &word : words)
        arguments.append(word.data());
    return quick_test_main_with_setup(
        int(arguments.size()), arguments.data(), "qml_test", OZ_QML_TESTS, setup);
}

const QString WithoutPhone = "Unknown";

class QmlTest : public ServicesTest, public ::testing::WithParamInterface<QString>
{
protected:
    QmlTest() : ServicesTest(PhoneFile) { }
};

QStringList filesWithPhone()
{
    QStringList names = QDir(OZ_QML_TESTS).entryList({"tst_*.qml"});
    for (QString &name : names)
        name = name.sliced(4).chopped(4);
    names.removeOne(WithoutPhone);
    return names;
}

} // namespace

TEST_P(QmlTest, Passes)
{
    Phone phone(&daemon, &root);
    EXPECT_EQ(failures(GetParam(), &phone), 0);
    phone.goOn();
}
INSTANTIATE_TEST_SUITE_P(Files, QmlTest, ::testing::ValuesIn(filesWithPhone()),
    [](const auto &file) { return file.param.toStdString(); });

// An example, and an order whose effect it shows.
using Example = std::pair<std::string, std::string>;

class PictureTest : public ServicesTest
{
protected:
    PictureTest() : ServicesTest(PhoneFile) { }
    // Runs a program that takes a picture of itself. Any log line is a failure, except those about missing
    // objects unless isComplete.
    QImage picture(const QString &program, const QStringList &words = {}) const
    {
        QProcess shown;
        shown.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        const QString file = root.file("/picture.png");
        shown.start(OZ_PROGRAMS "/" + program, words + QStringList{file});
        EXPECT_TRUE(waitUntil([&] { return shown.state() == QProcess::NotRunning; }));
        EXPECT_EQ(shown.exitCode(), 0);
        for (const QByteArray &line : shown.readAllStandardError().split('\n'))
            EXPECT_TRUE(line.isEmpty() || (!isComplete && line.startsWith("oz.device: ")))
                << line.toStdString();
        return QImage(file);
    }
    bool isComplete = true; // no object of the tree is missing
};

class QmlExampleTest : public PictureTest, public ::testing::WithParamInterface<Example>
{
};

TEST_P(QmlExampleTest, ShowsThePhoneAsItIs)
{
    const QString program = QString::fromStdString("example-" + GetParam().first);
    const QImage before = picture(program);
    ASSERT_FALSE(before.isNull());
    EXPECT_EQ(picture(program), before);
    sim(QString::fromStdString(GetParam().second));
    EXPECT_NE(picture(program), before);
}
INSTANTIATE_TEST_SUITE_P(Examples, QmlExampleTest,
    ::testing::Values(Example{"statusbar", "simcard remove"},
        Example{"profiles", "data-profile mms enabled off"}, Example{"cast", "miracast sink-goes projector"}),
    [](const auto &example) { return example.param.first; });

TEST_F(PictureTest, ThePanelShowsEachFacilityOfThePhoneWithoutAWarning)
{
    QSize size;
    for (const char *page : {"battery", "data-profile", "display", "miracast"}) {
        const QImage shown = picture("ozdevice-panel", {"--page", page, "--picture"});
        EXPECT_FALSE(shown.isNull()) << page;
        size = shown.size();
    }
    EXPECT_EQ(picture("ozdevice-panel", {"--dark", "--picture"}).size(), size);
}

TEST_F(PictureTest, ThePanelHelpsAndRefusesWrongWordsWithoutADisplay)
{
    const struct
    {
        QStringList words;
        int status;
        QByteArray output, errors;
    } cases[] = {
        {{"--help"}, 0, "Usage: ozdevice-panel [options]\n", ""},
        {{"--help-all"}, 0, "Usage: ozdevice-panel [options]\n", ""},
        {{"--page", "nosuch"}, 2, "",
            "ozdevice-panel: there is no page 'nosuch'; there is activity, battery, cellular-network, "
            "clock, "},
        {{"--page", ""}, 2, "", "ozdevice-panel: there is no page ''; there is activity, "},
        {{"--size", "12"}, 2, "", "ozdevice-panel: --size: expected WIDTHxHEIGHT, not '12'\n"},
    };
    for (const auto &[words, status, output, errors] : cases) {
        QProcess panel;
        QProcessEnvironment withoutDisplay = QProcessEnvironment::systemEnvironment();
        withoutDisplay.insert("QT_QPA_PLATFORM", "none");
        panel.setProcessEnvironment(withoutDisplay);
        panel.start(OZ_PROGRAMS "/ozdevice-panel", words);
        ASSERT_TRUE(panel.waitForFinished()) << words.join(' ').toStdString();
        EXPECT_EQ(panel.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(panel.exitCode(), status) << words.join(' ').toStdString();
        EXPECT_TRUE(panel.readAllStandardOutput().startsWith(output)) << words.join(' ').toStdString();
        EXPECT_TRUE(panel.readAllStandardError().startsWith(errors)) << words.join(' ').toStdString();
    }
}

TEST(PanelManualTest, HasEveryOption)
{
    QProcess panel;
    panel.start(OZ_PROGRAMS "/ozdevice-panel", {"--help"});
    ASSERT_TRUE(panel.waitForFinished());
    QFile file(OZ_MANUAL "/ozdevice-panel.1");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no page of the manual (is lowdown installed?)";
    const QString page = QString::fromUtf8(file.readAll());
    static const QRegularExpression option("--[a-z-]+");
    int count = 0;
    for (const QRegularExpressionMatch &found :
        option.globalMatch(QString::fromUtf8(panel.readAllStandardOutput()))) {
        EXPECT_TRUE(page.contains(found.captured())) << found.captured().toStdString();
        ++count;
    }
    EXPECT_GE(count, 6);
}

// A device without a simulated phone, first without a daemon.
class PanelOfADeviceTest : public PictureTest
{
protected:
    void SetUp() override { }
    void TearDown() override
    {
        daemon.terminate();
        daemon.waitForFinished();
    }
};

TEST_F(PanelOfADeviceTest, ShowsTheDeviceAndWhyAFacilityIsUnknown)
{
    isComplete = false;
    const QStringList words{"--page", "battery", "--size", "360x640", "--picture"};
    const QImage without = picture("ozdevice-panel", words);
    QStringList sources{"--config", "/dev/null", "--source", "led=none"};
    for (const char *facility : {"battery", "sdcard", "simcard", "radio"})
        sources << "--source" << QString::fromLatin1(facility) + "=none";
    daemon.start(OZ_DAEMON, sources);
    awaitDaemon(&daemon);
    const QImage device = picture("ozdevice-panel", words);
    EXPECT_NE(device, without);
    EXPECT_EQ(device.size(), without.size());
}

TEST_F(PictureTest, ThePanelTranslatesTheDaemonsTexts)
{
    QFile file(OZ_PANEL "/panel_de.ts");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString known = QString::fromUtf8(file.readAll());
    for (const QVariant &part : askDaemon("describe").value("simulated").toMap()) {
        for (const QVariant &verb : part.toMap().value("verbs").toList()) {
            for (const char *text : {"name", "help"}) {
                const QString source = verb.toMap().value(text).toString().replace('\'', "&apos;");
                EXPECT_TRUE(known.contains("<source>" + source + "</source>")) << source.toStdString();
            }
        }
    }
}

TEST_F(PictureTest, ThePanelUsesTheLanguageOfTheLocale)
{
    const QStringList words{"--page", "radio", "--size", "360x640", "--picture"};
    const QImage english = picture("ozdevice-panel", words);
    qputenv("LANGUAGE", "de");
    const QImage german = picture("ozdevice-panel", words);
    qputenv("LANGUAGE", "en");
    EXPECT_NE(german, english);
    EXPECT_EQ(picture("ozdevice-panel", words), english);
    qunsetenv("LANGUAGE");
}

// lupdate changes nothing: no text is new, obsolete or unfinished.
TEST(PanelTranslationTest, IsComplete)
{
    const QTemporaryDir own;
    const QString copy = own.filePath("panel_de.ts");
    ASSERT_TRUE(QFile::copy(OZ_PANEL "/panel_de.ts", copy));
    QStringList words{"-silent", "-no-obsolete", "-locations", "none", OZ_DAEMON_TEXTS};
    for (const QFileInfo &file : QDir(OZ_PANEL).entryInfoList({"*.cpp", "*.hpp", "*.qml"}))
        words.append(file.filePath());
    EXPECT_EQ(QProcess::execute(OZ_LUPDATE, words + QStringList{"-ts", copy}), 0);
    const auto content = [](const QString &name) {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    };
    const QByteArray text = content(copy);
    EXPECT_EQ(text.toStdString(), content(OZ_PANEL "/panel_de.ts").toStdString());
    EXPECT_GT(text.count("<translation>"), 60);
    EXPECT_FALSE(text.contains("unfinished"));
}

TEST(QmlModuleTest, HasEveryClassAndHolderOfTheLibrary)
{
    QFile description(OZ_QML_MODULES "/oz/device/oz_device.qmltypes");
    ASSERT_TRUE(description.open(QIODevice::ReadOnly));
    const QByteArray known = description.readAll();
    int found = 0;
    for (const QFileInfo &header : QDir(OZ_HEADERS "/oz/device").entryInfoList({"*.hpp"})) {
        QFile file(header.filePath());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        if (!text.contains("Q_OBJECT") && !text.contains("Q_GADGET"))
            continue;
        EXPECT_TRUE(known.contains("\"oz.device/" + header.baseName().toUtf8() + " 1.0\""))
            << header.baseName().toStdString();
        if (text.contains("Q_ENUM(Type)")) {
            EXPECT_TRUE(known.contains("name: \"oz::qml::" + header.baseName().toUtf8()
                + "Holder\"\n        accessSemantics: \"reference\"\n        prototype: "
                  "\"oz::qml::EnumHolder\""))
                << header.baseName().toStdString() << " names no enumerators";
        }
        ++found;
    }
    EXPECT_GT(found, 40);
}

class QmlWithoutPhoneTest : public DeviceTest
{
};

TEST_F(QmlWithoutPhoneTest, EveryValueIsTheOneForUnknown)
{
    EXPECT_EQ(failures(WithoutPhone, nullptr), 0);
    log.take(); // names the missing objects
}

int main(int argc, char **argv)
{
    qunsetenv("QT_LOGGING_RULES"); // tests compare the log
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QTemporaryDir own; // Qt warns without a runtime directory
    qputenv("XDG_RUNTIME_DIR", own.path().toLocal8Bit());
    QGuiApplication application(argc, argv);
    QQuickStyle::setStyle("Fusion"); // as in the panel
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

#include "QmlTest.moc"
