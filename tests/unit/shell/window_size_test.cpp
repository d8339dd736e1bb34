#include "support/test_main.h"
#include "window_stage.h"

#include <QLabel>
#include <QLayout>
#include <QTest>
#include <QTimer>
#include <QWindow>

/// The main window's size: free until it is first shown, the user's from then on.
class WindowSizeTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init();
    void fitsAtTheFirstShow_data();
    void fitsAtTheFirstShow();
    void firstShowFitsWhatIsLeft();
    void growsOnlyWhereTheContentDoesNotFit_data();
    void growsOnlyWhereTheContentDoesNotFit();
    void keepsTheUsersSize_data();
    void keepsTheUsersSize();
    void growsInTheTray();
    void maximisedStaysMaximised();
    void minimisedKeepsItsSize();

private:
    void settle();
    void show();
    void resizeByHand(QSize size);
    void arrive(std::uint32_t productId);
    void lose();
};

void WindowSizeTest::init()
{
    begin();
    // The clock of the window is the test's.
    for (QTimer* timer : window->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
        timer->setInterval(3600 * 1000);
}

/// As many rounds as the toolkit takes to show what was added and to lay it out.
void WindowSizeTest::settle()
{
    for (int round = 0; round < 6; ++round) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void WindowSizeTest::show()
{
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    settle();
}

/// As the window system reports a user who drags the window's frame: unlike QWidget::resize(),
/// that is no size set by the program.
void WindowSizeTest::resizeByHand(QSize size)
{
    window->windowHandle()->resize(size);
    settle();
    QCOMPARE(window->size(), size);
}

void WindowSizeTest::arrive(std::uint32_t productId)
{
    simulated.control().plug(productId);
    window->detectDevice();
    settle();
}

void WindowSizeTest::lose()
{
    simulated.control().unplug();
    for (int read = 0; read < 3; ++read)
        window->checkDevicePid();
    settle();
}

void WindowSizeTest::fitsAtTheFirstShow_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::newRow("ka1") << std::uint32_t{1};
    QTest::newRow("ka2") << std::uint32_t{2};
    QTest::newRow("ks") << std::uint32_t{15};
}

void WindowSizeTest::fitsAtTheFirstShow()
{
    QFETCH(std::uint32_t, productId);
    arrive(productId);
    show();
    QCOMPARE(window->size(), window->sizeHint());
    // Nothing in a panel can be squeezed: what does not fit has to grow.
    QCOMPARE(window->minimumSize(), window->sizeHint());
}

void WindowSizeTest::firstShowFitsWhatIsLeft()
{
    show();
    const QSize waiting = window->size();
    init();
    arrive(2);
    lose();
    show();
    QCOMPARE(window->size(), waiting);
}

void WindowSizeTest::growsOnlyWhereTheContentDoesNotFit_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("hidden");
    for (const bool hidden : {false, true}) {
        const QByteArray where = hidden ? "in the tray, " : "in sight, ";
        QTest::newRow(where + "small") << QSize(200, 150) << hidden;
        QTest::newRow(where + "wide") << QSize(900, 150) << hidden;
        QTest::newRow(where + "high") << QSize(200, 800) << hidden;
        QTest::newRow(where + "large") << QSize(900, 800) << hidden;
    }
}

void WindowSizeTest::growsOnlyWhereTheContentDoesNotFit()
{
    QFETCH(QSize, size);
    QFETCH(bool, hidden);
    show();
    resizeByHand(size);
    window->setHidden(hidden);
    arrive(2);
    show();
    const QSize grown = size.expandedTo(window->sizeHint());
    QCOMPARE(window->size(), grown);

    // Nothing makes it smaller: not another status, nor a smaller panel.
    window->setHidden(hidden);
    lose();
    show();
    QCOMPARE(window->size(), grown);
    arrive(15);
    QCOMPARE(window->size(), grown.expandedTo(window->sizeHint()));
}

void WindowSizeTest::keepsTheUsersSize_data()
{
    QTest::addColumn<std::uint32_t>("productId");
    QTest::newRow("unknown, looked at again each second") << std::uint32_t{7};
    QTest::newRow("ka1") << std::uint32_t{1};
}

void WindowSizeTest::keepsTheUsersSize()
{
    QFETCH(std::uint32_t, productId);
    show();
    resizeByHand({700, 600});
    for (int arrival = 0; arrival < 3; ++arrival) {
        arrive(productId);
        QCOMPARE(window->size(), QSize(700, 600));
        window->hide();
        settle();
        show();
        QCOMPARE(window->size(), QSize(700, 600));
    }
}

void WindowSizeTest::growsInTheTray()
{
    // A firmware that cannot be read adds a line below the panel.
    arrive(1);
    show();
    const QSize panel = window->size();
    window->hide();
    simulated.control().fail(0xFFDC20A0, 1, 31);
    arrive(1);
    show();
    QCOMPARE(window->width(), panel.width());
    QVERIFY(window->height() > panel.height());
    QCOMPARE(window->size(), window->sizeHint());
    const QSize both = window->size();
    arrive(1);
    QCOMPARE(window->size(), both);
}

void WindowSizeTest::maximisedStaysMaximised()
{
    show();
    window->showMaximized();
    settle();
    const QSize whole = window->size();
    QVERIFY(window->isMaximized() && whole.width() > 700);
    arrive(2);
    lose();
    QVERIFY(window->isMaximized());
    QCOMPARE(window->size(), whole);
}

void WindowSizeTest::minimisedKeepsItsSize()
{
    show();
    resizeByHand({900, 700});
    window->showMinimized();
    settle();
    arrive(2);
    lose();
    window->showNormal();
    settle();
    QCOMPARE(window->size(), QSize(900, 700));
}

QUORVEL_TEST_MAIN(WindowSizeTest)
#include "window_size_test.moc"
