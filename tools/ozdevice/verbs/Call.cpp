#include "meta/MetaDescription.hpp"
#include "meta/MetaText.hpp"
#include "meta/MethodCall.hpp"
#include "ozdevice/CallCompletion.hpp"
#include "ozdevice/FacilityDescription.hpp"
#include "ozdevice/FacilitySelection.hpp"
#include "ozdevice/Output.hpp"
#include "ozdevice/PropertySetting.hpp"
#include "ozdevice/SignalLines.hpp"
#include "ozdevice/Verbs.hpp"

#include <oz/PpsObject.hpp>
#include <oz/device/RequestError.hpp>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace oz::tools {

namespace {

struct CallOptions
{
    FacilitySelection facility;
    std::string method;
    std::vector<std::string> words;
    std::vector<std::string> sets;
};

// Says on a terminal that a call waits, if it takes long. The call blocks its thread, so another thread
// prints it.
class WaitingNotice
{
public:
    explicit WaitingNotice(const QString &what)
    {
        if (!::isatty(STDERR_FILENO))
            return;
        // Signals must reach the calling thread, whose event loop may handle them.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        m_thread = std::jthread([what](const std::stop_token &ended) {
            std::mutex mutex;
            std::unique_lock lock(mutex);
            std::condition_variable_any().wait_for(
                lock, ended, std::chrono::milliseconds(500), [] { return false; });
            if (!ended.stop_requested())
                printError(what + " waits for the service (Ctrl-C breaks it off)"_L1);
        });
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

private:
    std::jthread m_thread;
};

meta::MethodCall findMethod(const FacilityEntry &entry, const QString &name, const QStringList &words)
{
    QString problem;
    auto method = meta::MethodCall::find(entry.type, name, words, &problem);
    if (method)
        return *std::move(method);
    throw CommandError(WrongUse,
        problem.isEmpty()
            ? unknownText(entry.name + " has no method"_L1, name, meta::MethodCall::namesOf(entry.type))
            : QString(entry.name + ": "_L1 + problem));
}

// A class without any open object does not support its facility on this device.
bool isSupported(const FacilityInstance &instance)
{
    const auto objects = instance.object()->findChildren<PpsObject *>();
    return std::any_of(objects.cbegin(), objects.cend(), [](const PpsObject *pps) { return pps->isOpen(); });
}

// Prints the result of a method, and returns whether it means success.
bool printResult(const FacilityInstance &instance, const QByteArray &method, const QVariant &result)
{
    const FacilityEntry &entry = instance.entry();
    const auto returned = entry.calls.returns.constFind(method);
    if (returned == entry.calls.returns.cend()) {
        if (result.isValid())
            printLine(meta::valueText(result));
        return !entry.calls.falseOnFailure.contains(method) || result.toBool();
    }
    const int number = result.toInt();
    const char *name = returned->names.valueToKey(number);
    printLine((name ? QString::fromLatin1(name) : u"unknown"_s) + " ("_L1 + QString::number(number) + u')');
    return !returned->success || number == *returned->success;
}

// Returns the reasons for the failure of a request: the library's warnings and the state of the object that
// receives requests, or else the error of the request.
QStringList reasonsOf(
    const FacilityInstance &instance, const QStringList &warnings, const device::RequestError &error)
{
    QStringList reasons = warnings;
    if (const QString &control = instance.entry().calls.control; !control.isEmpty()) {
        const QString path = control.contains(u'%') ? control.arg(instance.selected()) : control;
        if (const int number = tryToOpen(path))
            reasons.append(Problem{path, number}.text());
    }
    if (reasons.isEmpty() && !error.text().isEmpty())
        reasons.append(error.text());
    return reasons;
}

int invoke(const FacilityInstance &instance, const QByteArray &name, const meta::MethodCall &method,
    const std::vector<PropertySetting> &settings)
{
    CallCompletion completion(instance, name, [](const QMetaMethod &signal, const QVariantList &arguments) {
        if (!meta::isNumericTwin(signal))
            printLine(signalText(signal, arguments));
    });
    for (const PropertySetting &setting : settings)
        setting.applyTo(instance);
    std::optional<WaitingNotice> notice(instance.title() + u' ' + QLatin1String(name));
    const device::RequestError error;
    (void)takeLibraryWarnings();
    const QVariant result = method.invoke(instance.object());
    const QStringList warnings = takeLibraryWarnings();
    if (!instance.entry().calls.answers.contains(name))
        notice.reset();
    const bool isAccepted = printResult(instance, name, result) && error.number() == 0;
    for (const QString &reason : isAccepted ? warnings : reasonsOf(instance, warnings, error))
        printError(instance.title() + ": "_L1 + reason);
    return isAccepted ? completion.wait() : int(Failed);
}

int call(const CallOptions &options)
{
    const FacilityEntry &entry = options.facility.entry();
    if (options.method.empty()) {
        if (meta::MethodCall::namesOf(entry.type).isEmpty())
            throw CommandError(Failed, entry.name + " has no methods"_L1);
        printMethods(entry);
        return Success;
    }
    const QByteArray name = QByteArray::fromStdString(options.method);
    const meta::MethodCall method = findMethod(entry, QString::fromUtf8(name), toStringList(options.words));
    std::vector<PropertySetting> settings;
    for (const std::string &set : options.sets)
        settings.push_back(PropertySetting::parse(entry, QString::fromStdString(set)));
    // The method may need no selected instance.
    const auto presence = entry.calls.methodsWithoutSelection.contains(name)
        ? FacilityInstance::MayBeUnselected
        : FacilityInstance::MustExist;
    if (availableFacilities({&entry}).empty())
        return Unavailable;
    const FacilityInstance instance(entry, options.facility.selected(entry), presence);
    if (!instance.reportProblems())
        return Unavailable;
    if (entry.calls.answers.contains(name) && !entry.calls.returns.contains(name) && !isSupported(instance)) {
        printError(instance.title() + ": the device does not support it"_L1);
        return Unavailable;
    }
    return invoke(instance, name, method, settings);
}

} // namespace

void addCallVerb(const Verb &parser, Action &action)
{
    const auto [verb, options] =
        Verbs<CallOptions>(parser, action)
            .add("call", "Call a method of a facility and print what it returns", call);
    options->facility.addFacility(verb);
    verb.option("METHOD", options->method, "The method; without it, all are listed");
    verb.option("ARGUMENT", options->words, "Enumerators by name; negative numbers after --");
    verb.option("--set", options->sets, "Set a writable property of the object first, repeatable")
        .valueName("PROPERTY=VALUE")
        .repeatable();
    options->facility.addSelectors(verb);
    verb.footer(
        "If the effect of a call outlasts it, as with flashes, the command waits for the end. If a signal\n"
        "answers it, as with a scan, the command prints all signals until that one. A request that is not\n"
        "accepted, or whose answer is not Success, fails with the exit status 1.");
}

} // namespace oz::tools
