// pps ls, get, set, rm, watch and send: access to the tree itself.

#include "meta/MetaText.hpp"
#include "ozdevice/DeviceRootWatch.hpp"
#include "ozdevice/Durations.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/Tree.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/DeviceRoot.hpp>
#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/PpsText.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cerrno>

namespace oz::tools {

namespace {

struct PpsOptions
{
    std::string path = "/pps";
    std::vector<std::string> words;
    std::string attribute;
    std::string mode = "644";
    Duration duration;
    bool json = false;
    bool wait = false;
    bool replace = false;
    int count = 0;
};

QString pathOf(const PpsOptions &options)
{
    return ppsPath(QString::fromStdString(options.path));
}

CommandError failure(const QString &path, int error, const QString &text)
{
    const bool unavailable =
        error == ENOENT || error == EACCES || error == ECONNREFUSED || error == ECONNRESET;
    return {unavailable ? Unavailable : Failed, path + ": "_L1 + text};
}

CommandError failure(const PpsObject &object)
{
    return failure(object.path(), object.error(),
        object.error() == EINVAL
            ? u"no path of an object, or an unknown option (known are f=A+B, delta, wait)"_s
            : object.errorString());
}

// Reads the attributes of one message; throws CommandError with the reason if they are malformed.
QVariantMap parseLines(const PpsOptions &options)
{
    if (options.words.empty())
        throw CommandError(WrongUse, u"give an attribute, for example name::text"_s);
    QByteArray text;
    for (const std::string &word : options.words)
        text += QByteArray::fromStdString(word) + '\n';
    QString problem;
    const QVariantMap message = PpsText::decode(text, &problem);
    if (!problem.isEmpty())
        throw CommandError(
            WrongUse, "attribute "_L1 + problem + " (for example name::text, name:n:5, name:b:true)"_L1);
    return message.first().toMap();
}

void print(const QByteArray &message, const PpsOptions &options)
{
    if (!options.json) {
        printLines(QString::fromUtf8(message).chopped(message.endsWith('\n') ? 1 : 0));
        return;
    }
    QString problem;
    const QVariantMap decoded = PpsText::decode(message, &problem);
    if (!problem.isEmpty())
        throw CommandError(Failed, "malformed object: "_L1 + problem);
    const bool isOneOfMany = options.count || options.duration.seconds > 0;
    printJson(
        meta::valueJson(decoded).toObject(), isOneOfMany ? QJsonDocument::Compact : QJsonDocument::Indented);
}

QByteArray readOrThrow(PpsObject &object)
{
    bool ok = false;
    QByteArray message = object.read(&ok);
    if (!ok)
        throw failure(object);
    return message;
}

int ls(const PpsOptions &options)
{
    const QString path = pathOf(options);
    const QFileInfo place(devicePath(path));
    if (!place.exists())
        throw failure(path, ENOENT, u"No such file or directory"_s);
    if (!place.isDir())
        throw CommandError(Failed, path + ": not a directory"_L1);
    for (const QFileInfo &entry :
        QDir(place.filePath()).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        // "/" marks a directory, "=" an object that a service serves.
        const QString mark = entry.isDir() ? u"/"_s : entry.isFile() ? QString() : u"="_s;
        printLine(entry.fileName() + mark);
    }
    return Success;
}

int get(const PpsOptions &options)
{
    PpsObject object(pathOf(options));
    if (!object.open(PpsOpenMode::Subscribe))
        throw failure(object);
    const QByteArray message = readOrThrow(object);
    if (options.attribute.empty()) {
        print(message, options);
        return Success;
    }
    QString problem;
    const QVariantMap attributes =
        PpsText::decode(message, &problem)
            .value(QLatin1Char('@') + QFileInfo(object.path().section(u'?', 0, 0)).fileName())
            .toMap();
    if (!problem.isEmpty())
        throw CommandError(Failed, object.path() + ": "_L1 + problem);
    const QString name = QString::fromStdString(options.attribute);
    if (!attributes.contains(name)) {
        throw CommandError(Unavailable,
            object.path() + ": no attribute '"_L1 + name + "'; it has "_L1 + enumerated(attributes.keys()));
    }
    const QVariant value = attributes.value(name);
    printLine(value.typeId() == QMetaType::QString ? value.toString() : meta::valueText(value));
    return Success;
}

int set(const PpsOptions &options)
{
    bool isMode = false;
    const mode_t mode = QString::fromStdString(options.mode).toUInt(&isMode, 8);
    if (!isMode || mode > 0777)
        throw CommandError(WrongUse, u"--mode is an octal file mode such as 640"_s);
    const QFileInfo place(devicePath(pathOf(options)));
    if (place.exists() && !place.isFile() && !place.isDir()) {
        throw CommandError(
            Failed, pathOf(options) + ": a service serves it; `ozdevice pps send` asks that"_L1);
    }
    PpsPublisher publisher(pathOf(options), mode);
    const QVariantMap attributes = parseLines(options);
    if (!(options.replace ? publisher.replace(attributes) : publisher.publish(attributes)))
        throw failure(publisher.path(), publisher.error(), publisher.errorString());
    return Success;
}

int rm(const PpsOptions &options)
{
    PpsPublisher publisher(pathOf(options));
    QStringList names;
    for (const std::string &word : options.words)
        names.append(QString::fromStdString(word));
    if (!(names.isEmpty() ? publisher.remove() : publisher.removeAttributes(names)))
        throw failure(publisher.path(), publisher.error(), publisher.errorString());
    return Success;
}

int watch(const PpsOptions &options)
{
    PpsObject object(pathOf(options));
    int seen = 0;
    EventLoop loop;
    const DeviceRootWatch rootWatch(&loop);
    const auto onReady = [&] {
        bool ok = false;
        const QByteArray message = object.read(&ok);
        if (ok)
            print(message, options);
        else
            printLine("# "_L1 + object.errorString());
        if (object.error() == ECONNRESET)
            throw failure(object);
        if (options.count && ++seen >= options.count)
            QCoreApplication::quit();
    };
    QObject::connect(&object, &PpsObject::readyRead, [&] { loop.guard(onReady); });
    if (!object.open(PpsOpenMode::Subscribe))
        throw failure(object);
    if (options.duration.seconds > 0)
        QTimer::singleShot(options.duration.milliseconds(), qApp, &QCoreApplication::quit);
    return loop.run();
}

int send(const PpsOptions &options)
{
    PpsObject object(pathOf(options));
    const QString plain = object.path().section(u'?', 0, 0);
    if (QFileInfo(devicePath(plain)).isFile()) {
        throw CommandError(
            Failed, plain + ": a state object takes no messages; `ozdevice pps set` publishes it"_L1);
    }
    const QByteArray message = PpsText::encode(parseLines(options));
    if (options.wait)
        object.setBlocking(true);
    const bool reads = options.wait || object.path().contains("wait"_L1);
    if (!object.open(reads ? PpsOpenMode::PublishSubscribe : PpsOpenMode::Publish))
        throw failure(object);
    if (!object.write(message))
        throw failure(object);
    if (reads)
        print(readOrThrow(object), options);
    return Success;
}

} // namespace

void addPpsVerbs(const Verb &parser, Action &action)
{
    const Verb pps = parser.add("pps", "Read and change the publish/subscribe tree itself");
    pps.needsVerb();
    pps.footer(
        "PATH is a device path (/pps/system/...), or what follows /pps/. Options follow it after a '?',\n"
        "joined by commas: f=A+B (only these attributes), delta (only what changed), wait (wait for the "
        "next\n"
        "message). An attribute is written as in the tree: name::text, name:n:5, name:b:true,\n"
        "name:json:{\"a\":1}, name:c:with\\nescapes, name:b64:AAEC, -name (remove it).");
    Verbs<PpsOptions> verbs(pps, action);

    const auto [lister, lsOptions] =
        verbs.add("ls", "List a directory; '/' marks directories, '=' served objects", ls);
    lister.option("PATH", lsOptions->path).defaultText("/pps");

    const auto [getter, getOptions] = verbs.add("get", "Print an object, or one attribute of it", get);
    getter.option("PATH", getOptions->path).required();
    getter.option("ATTRIBUTE", getOptions->attribute, "Print only the value of this one");
    getter.flag("--json", getOptions->json, "As JSON");

    const auto [setter, setOptions] =
        verbs.add("set", "Publish attributes of a state object, and create it if necessary", set);
    setter.option("PATH", setOptions->path).required();
    setter.option("ATTRIBUTE", setOptions->words);
    setter.takesAnyWord();
    setter.flag("--replace", setOptions->replace, "Remove all other attributes");
    setter.option("--mode", setOptions->mode, "The file mode of a new object").defaultText("644");

    const auto [remover, rmOptions] = verbs.add("rm", "Remove an object, or attributes of it", rm);
    remover.option("PATH", rmOptions->path).required();
    remover.option("NAME", rmOptions->words, "Attributes (the whole object)");

    const auto [watcher, watchOptions] = verbs.add("watch", "Print an object now and at each change", watch);
    watcher.option("PATH", watchOptions->path).required();
    watcher.flag("--json", watchOptions->json, "As JSON");
    watcher.count("--count", watchOptions->count, "End after this number of messages");
    watcher.duration("--for", watchOptions->duration.seconds, "End after a time (10s, 500ms, 2m)");

    const auto [sender, sendOptions] = verbs.add("send", "Send one message to a served object", send);
    sender.option("PATH", sendOptions->path).required();
    sender.option("ATTRIBUTE", sendOptions->words);
    sender.takesAnyWord();
    sender.flag("--wait", sendOptions->wait, "Wait for the answer and print it");
    sender.flag("--json", sendOptions->json, "Print the answer as JSON");
}

} // namespace oz::tools
