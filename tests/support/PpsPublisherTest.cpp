#include "harness/Testing.hpp"

#include <oz/PpsPublisher.hpp>

#include <QDir>
#include <QRandomGenerator>

#include <csignal>
#include <ctime>
#include <sys/wait.h>
#include <unistd.h>

using namespace oz;
using namespace oz::testing;

namespace {

const QString Path = "/pps/store/box";

using PpsPublisherTest = DeviceTest;

TEST_F(PpsPublisherTest, APublisherThatIsKilledLeavesAWholeObjectAndNoLock)
{
    PpsPublisher publisher(Path);
    ASSERT_TRUE(publisher.publish({{"first", 0}, {"text", QString()}, {"last", 0}}));
    int leftovers = 0;
    for (int round = 0; round < 2000; ++round) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PpsPublisher victim(Path);
            for (int i = 1;; ++i)
                victim.publish({{"first", i}, {"text", QString(i % 5000, u'x')}, {"last", i}});
        }
        const timespec instant{0, long(QRandomGenerator::global()->bounded(1'000'000))};
        ::nanosleep(&instant, nullptr);
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);

        leftovers += QFile::exists(root.file("/pps/store/.box.tmp"));
        const QVariantMap box = attributesOf(Path);
        ASSERT_EQ(box.value("first"), box.value("last"));
        ASSERT_EQ(box.value("text").toString().size(), box.value("first").toInt() % 5000);
        // A number that no victim reaches: what is there already would not be published again.
        const int next = 1'000'000 + round;
        ASSERT_TRUE(
            publisher.publish({{"first", next}, {"text", QString(next % 5000, u'x')}, {"last", next}}));
        ASSERT_EQ(attributesOf(Path).value("last"), next);
        ASSERT_EQ(
            QDir(root.file("/pps/store")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{"box"});
    }
    EXPECT_GT(leftovers, 0) << "no publisher was ever killed in the middle";
}

TEST_F(PpsPublisherTest, ManyProcessesPublishAtOnceAndNothingIsLost)
{
    constexpr int processes = 8;
    constexpr int rounds = 300;
    std::vector<pid_t> children;
    for (int number = 0; number < processes; ++number) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            PpsPublisher publisher(Path);
            const QString name = "p" + QString::number(number);
            bool good = true;
            for (int i = 1; i <= rounds; ++i) {
                good = good && publisher.publish({{name, i}});
                // What this process published stands, whatever the others did since.
                good = good && attributesOf(Path).value(name) == i;
            }
            ::_exit(good ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const QVariantMap box = attributesOf(Path);
    EXPECT_EQ(box.size(), processes);
    for (const QVariant &value : box)
        EXPECT_EQ(value, rounds);
}

TEST_F(PpsPublisherTest, ReplacesRemovesAndRefuses)
{
    PpsPublisher publisher(Path);
    EXPECT_FALSE(publisher.remove());
    EXPECT_EQ(publisher.error(), ENOENT);
    EXPECT_FALSE(publisher.removeAttributes({"a"}));
    EXPECT_EQ(publisher.error(), ENOENT);
    ASSERT_TRUE(publisher.publish({{"a", 1}, {"b", 2}}));
    ASSERT_TRUE(publisher.replace({{"b", 3}, {"c", 4}}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"b", 3}, {"c", 4}}));
    ASSERT_TRUE(publisher.removeAttributes({"b", "never there"}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"c", 4}}));

    EXPECT_FALSE(publisher.publish({{"bad:name", 1}}));
    EXPECT_EQ(publisher.error(), EINVAL);
    EXPECT_TRUE(publisher.errorString().startsWith("attribute 'bad:name' cannot be encoded"));
    EXPECT_FALSE(publisher.publish({{"c", QString(700'000, u'x')}, {"d", QString(700'000, u'x')}}));
    ASSERT_TRUE(publisher.publish({{"c", QString(700'000, u'x')}}));
    EXPECT_FALSE(publisher.publish({{"d", QString(700'000, u'x')}}));
    EXPECT_EQ(publisher.error(), EMSGSIZE) << "each fits, the object that would come of it does not";
    EXPECT_FALSE(PpsPublisher(Path + "?delta").publish({{"a", 1}}));
    EXPECT_FALSE(PpsPublisher("/pps/store/box/below").publish({{"a", 1}}));

    // What a hand left behind is healed by the next publish.
    root.place(Path, "broken line\nkept::yes\n");
    ASSERT_TRUE(publisher.publish({{"a", 1}}));
    EXPECT_EQ(attributesOf(Path), (QVariantMap{{"a", 1}, {"kept", "yes"}}));
}

} // namespace
