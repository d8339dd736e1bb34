#pragma once

#include "system/desktop/simulator_tool.h"

#include <QMap>
#include <QSet>
#include <QString>

#include <optional>

/// What the files of a program that serves a KA1 must hold, told by what the interface has
/// received: the one thread that asks saves what came of a request before it asks again. One story
/// for each run, from a fresh interface on.
class StoredStory
{
public:
    /// "ka1.ini/Dial/MicValue" and the text stored there.
    using Entries = QMap<QString, QString>;

    /// The settings file of this name as entries; nothing when a line of it is neither a group nor
    /// a key with its value. A file that is not there has none.
    static std::optional<Entries> read(const QString& fullName);

    explicit StoredStory(const Entries& atStart);

    /// The next request that the interface has received.
    void take(const TracedRequest& request);
    /// The program has ended in order, and so has saved all.
    void endInOrder() { takeAsSaved(); }

    /// How many changes the interface was told of after it got what was stored.
    int changes() const { return changeCount; }
    /// How many of them are choices in the dialog.
    int choices() const { return choiceCount; }

    /// What of the stored values the interface did not get when it arrived, in words; empty when
    /// it got all, or nothing yet that follows them.
    QString flawOfReplay() const { return replayFlaw; }
    /// The first entry that differs from what the interface was told, in words; empty when there
    /// is none.
    QString flawOf(const Entries& files) const;

    /// How many entries hold the change whose saving no later request proves.
    int lastMomentSaves(const Entries& files) const;

private:
    /// The headphone as the files hold it. Of these only the level reaches the interface.
    struct Output
    {
        int volume; ///< dB
        bool muted;
        bool dimmed;
        bool operator==(const Output&) const = default;
        int level() const;
    };

    static Output outputIn(const Entries& files);
    void takeCommand(const QByteArray& packet);
    void takeTable(const QMap<int, double>& changedCells);
    void choose(const char* key, const QString& value);
    void applyChoice();
    void announce(const QString& key, const QString& value);
    void takeAsSaved();
    void judgeReplay();
    /// What one turn or click may have made of the headphone for it to have this level.
    QList<Output> outputsWith(int level) const;

    Entries settled; ///< saved, or a default that may be
    Entries pending; ///< of the last request, being saved
    QSet<QString> stored;
    QList<Output> outputs; ///< one of these is saved
    QList<Output> pendingOutputs;
    QMap<int, double> table;
    Entries received; ///< by the interface, which starts with its own choices
    std::optional<std::pair<QString, QString>> choice; ///< set, but the engine not yet restarted
    bool replayed = false;
    QString replayFlaw;
    int changeCount = 0;
    int choiceCount = 0;
};
