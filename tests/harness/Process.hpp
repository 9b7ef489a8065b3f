#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <functional>

namespace oz::harness {

/*!
 * A program that a test needs. It ends with its owner. Whatever goes wrong with it is thrown with what it
 * wrote to its standard error, so that a test fails at once and says why.
 */
class Process : public QProcess
{
public:
    ~Process() override;
    /*! Starts it; throws where it does not exist, with the Debian package that has it. */
    void run(const QString &program, const QStringList &arguments,
        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    /*! Kills it. */
    void end();
    void stall(bool stalls);
    /*! Waits until it ends by itself; the event loop runs meanwhile. Throws where it does not. */
    void awaitEnd();
    /*! Waits until \a condition holds; throws where the process ends before, or nothing happens. */
    void await(const std::function<bool()> &condition);
    /*! Its next line, for which the test waits. */
    QString line();
    /*! Its standard error so far. */
    [[nodiscard]] QString errors() const;

private:
    [[noreturn]] void fail(const QString &what) const;

    QTemporaryFile m_errors; // a pipe that nobody reads might fill up
};

/*! Waits until the daemon serves its device root; throws what it said where it ends before. */
void awaitDaemon(QProcess *daemon);

/*! The words that start \a program as a user without any rights, where this user is root. */
[[nodiscard]] QStringList asNobody(const QStringList &program);
/*! Makes the file or folder that user's, where this one is root. */
void giveToNobody(const QString &file);

/*! A program of the build tree, copied with its libraries to where every user may read it. */
class ProgramForEverybody
{
public:
    explicit ProgramForEverybody(const QString &program);
    [[nodiscard]] QString file() const { return m_file; }
    void enter(QProcessEnvironment *environment) const;

private:
    QTemporaryDir m_folder;
    QString m_file;
};

/*! Why the system refuses namespaces of the kinds that these options of `unshare` name; empty where it does
 * not. */
[[nodiscard]] QString namespaceProblem(const QStringList &options);

} // namespace oz::harness
