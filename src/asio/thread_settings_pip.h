#pragma once

#include "platform/scoped_handle.h"

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
    /// Ends the loop wherever it waits, and only then closes the pipe. Takes less than half a
    /// second, whatever the system refuses: if it comes to the worst, the process ends with 0.
    ~ThreadSettingsPip() override;

signals:
    /// A message asked for the dialog; the value is always 1.
    void progressUpdated(int value);

protected:
    void run() override;

private:
    void serveClient();
    bool stop();

    std::unique_ptr<PipeEndpoint> pipe;
    std::atomic<bool> stopping = false;
    ScopedHandle worker; ///< The thread itself, set by run() ahead of workerIsKnown.
    std::atomic<bool> workerIsKnown = false;
};
