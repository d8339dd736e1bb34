#include "support/rounds.h"
#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"

#include <QDir>
#include <QFile>

#include <array>
#include <random>

#include <sys/file.h>

namespace {

/// Holds up programs that are started behind it, to let them go in the very same moment.
class Gate
{
public:
    explicit Gate(const QString& fileName)
        : file(fileName)
    {
        // One of an earlier gate may still be held by a program that went through it.
        QFile::remove(fileName);
        if (!file.open(QFile::ReadWrite) || ::flock(file.handle(), LOCK_EX) != 0)
            qFatal("cannot close the gate");
    }

    /// What stands before the command of such a program.
    QStringList command() const
    {
        return {QStringLiteral("flock"), QStringLiteral("--shared"), QStringLiteral("--no-fork"),
                file.fileName()};
    }

    void open() const { ::flock(file.handle(), LOCK_UN); }

private:
    QFile file;
};

} // namespace

/// Two copies started in the same moment, again and again, also where a killed copy has left its
/// mark: one runs, the other leaves with 0.
class SystemTwoCopies : public SystemTest
{
    Q_OBJECT

public:
    SystemTwoCopies() { Rounds::allowTimeFor(rounds); }

private slots:
    void exactlyOneRuns();

private:
    using Copies = std::array<std::unique_ptr<ChildProgram>, 2>;

    /// Starts two and returns the number of the one that runs on; nothing when not exactly one
    /// does.
    std::optional<std::size_t> startTwo(Copies& copies);
    /// What the two have told, in words, when it is not what it should be.
    QString flawOf(Copies& copies, std::size_t runs) const;
    unsigned below(unsigned bound) { return static_cast<unsigned>(random() % bound); }

    const int rounds = Rounds::number(Target::isWindows() ? 5 : 15);
    std::mt19937 random{Rounds::seed()};
};

std::optional<std::size_t> SystemTwoCopies::startTwo(Copies& copies)
{
    // Both wait at a gate before they become the program; some come right after each other.
    const Gate gate(folder().path(QStringLiteral("gate")));
    const bool together = below(4) != 0;
    copies[0] = session().startCopy(together ? gate.command() : QStringList());
    copies[1] = session().startCopy(together ? gate.command() : QStringList());
    QThread::msleep(50);
    gate.open();
    const auto decided = [](const auto& copy) {
        return !copy->isRunning() ||
               copy->debugLines().contains(QStringLiteral("Settings dialog created."));
    };
    if (!waitUntil([&] { return decided(copies[0]) && decided(copies[1]); }))
        return std::nullopt;
    if (copies[0]->isRunning() == copies[1]->isRunning())
        return std::nullopt;
    return copies[0]->isRunning() ? 0 : 1;
}

QString SystemTwoCopies::flawOf(Copies& copies, std::size_t runs) const
{
    const QString created = QStringLiteral("Settings dialog created.");
    ChildProgram& other = *copies.at(1 - runs);
    if (other.waitForExit() != 0)
        return QStringLiteral("exit code");
    const QStringList told = other.debugLines();
    if (!told.contains(QStringLiteral("Quorvel Mixer 已经在运行中。")) || told.contains(created))
        return told.join(QLatin1Char('|'));
    if (!copies.at(runs)->isRunning() || copies.at(runs)->debugLines().count(created) != 1)
        return copies.at(runs)->debugLines().join(QLatin1Char('|'));
    return {};
}

void SystemTwoCopies::exactlyOneRuns()
{
    qInfo("%d rounds, seed %u", rounds, Rounds::seed());
    int kills = 0;
    std::array<int, 2> ran{};
    for (int round = 0; round < rounds; ++round) {
        Copies copies;
        const auto runs = startTwo(copies);
        const QString lines = copies[0]->debugLines().join(QLatin1Char('|')) + QLatin1Char('\n') +
                              copies[1]->debugLines().join(QLatin1Char('|'));
        QVERIFY2(runs.has_value(), qPrintable(QString::number(round) + QLatin1Char('\n') + lines));
        QCOMPARE(flawOf(copies, *runs), QString());
        ++ran.at(*runs);
        if (below(2) == 0) {
            copies.at(*runs)->kill();
            ++kills;
        } else {
            QVERIFY(session().askToEnd(*copies.at(*runs)));
            QCOMPARE(copies.at(*runs)->waitForExit().value_or(-1), 0);
        }
        for (const auto& copy : copies)
            QFile::remove(copy->debugFile());
    }
    qInfo("the first one ran %d times, the second %d times; %d times a killed one's mark was left",
          ran[0], ran[1], kills);
}

QUORVEL_TEST_MAIN(SystemTwoCopies)
#include "system_two_copies_test.moc"
