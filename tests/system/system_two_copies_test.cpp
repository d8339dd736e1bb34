#include "support/test_main.h"
#include "system/desktop/system_test.h"
#include "system/desktop/target.h"
#include "support/rounds.h"

#include <QDir>
#include <QFile>

#include <array>
#include <random>

using namespace std::chrono_literals;

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

    const int rounds = Rounds::number(Target::isWindows() ? 5 : 20);
    std::mt19937 random{Rounds::seed()};
};

std::optional<std::size_t> SystemTwoCopies::startTwo(Copies& copies)
{
    // Most rounds try the very same moment, the others all stages of the first one's start.
    const unsigned distance = below(2) == 0 ? 0 : below(Target::isWindows() ? 400 : 60);
    copies[0] = session().startCopy();
    QThread::msleep(distance);
    copies[1] = session().startCopy();
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
    if (other.debugLines() != QStringList{QStringLiteral("Quorvel Mixer 已经在运行中。")})
        return other.debugLines().join(QLatin1Char('|'));
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
