#pragma once

#include <QThread>

#include <atomic>
#include <memory>

class PipeEndpoint;

/// Serves the pipe on which the ASIO driver asks for the settings dialog: one message per client,
/// one client every 100 ms at the most. Lives in the GUI thread; only run() is on its own.
class ThreadSettingsPip : public QThread
{
    Q_OBJECT

public:
    /// Creates the pipe; a thread without one can still be started and reports it at its pace.
    explicit ThreadSettingsPip(QObject* parent);
    /// Ends the loop if end() has not done so, and only then closes the pipe. A thread that does
    /// not end must not be destroyed.
    ~ThreadSettingsPip() override;

    /// Ends the loop wherever it waits. False when the thread still runs after two seconds.
    bool end();

signals:
    /// A message asked for the dialog; the value is always 1.
    void progressUpdated(int value);

protected:
    void run() override;

private:
    void serveClient();

    std::unique_ptr<PipeEndpoint> pipe;
    std::atomic<bool> stopping = false;
};
