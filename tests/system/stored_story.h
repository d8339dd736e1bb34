#pragma once

#include <QMap>
#include <QSet>
#include <QString>

#include <optional>

/// What the files of a program that serves a KA1 must hold, told by its debug lines: on the thread
/// that changes a value, its line and its saving follow each other. One story for each run.
class StoredStory
{
public:
    /// "ka1.ini/Dial/MicValue" and the text stored there.
    using Entries = QMap<QString, QString>;

    /// The settings file of this name as entries; nothing when a line of it is neither a group nor
    /// a key with its value. A file that is not there has none.
    static std::optional<Entries> read(const QString& fullName);

    explicit StoredStory(const Entries& atStart);

    /// The program's next debug line.
    void take(const QString& line);

    /// How many changes the lines have told of.
    int changes() const { return changeCount; }

    /// The first entry that differs from what the lines tell, in words; empty when there is none.
    QString flawOf(const Entries& files) const;

    /// How many entries hold the change that had its line, but whose saving no later line proves.
    int lastMomentSaves(const Entries& files) const;

private:
    bool takePanelLine(const QString& line);
    void takeDialogLine(const QString& line);
    void takeHeadphone(const QString& gain);
    void takeSwitch(const QString& key);
    void announce(const QString& key, const QString& value);
    void settle();
    void settle(const QString& key, const QString& value);
    bool allows(const QString& key, const QString& value) const;

    Entries settled;       ///< saved for sure
    Entries pending;       ///< a panel's changes: announced, being saved
    Entries applying;      ///< the dialog's choices: announced, saved in a moment or not at all
    QSet<QString> unknown; ///< saved, with a value that the lines do not tell
    QMap<QString, int> switches; ///< how often a switch has told of itself
    Entries startingSwitches;
    Entries outputSwitches; ///< MUTE and DIM, saved after the volume that they change
    bool muted = false;
    bool dimmed = false;
    int changeCount = 0;
};
