#pragma once

#include "port/handle_table.h"
#include "port/pipe_folder.h"
#include "port/pipe_stream.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

/// What ReadFile and WriteFile work on: either end of a pipe. Calls on one handle are served one
/// after the other, as on Windows for handles opened for synchronous use. They return Windows
/// error numbers.
class PipeObject : public PortObject
{
public:
    virtual DWORD read(void* buffer, DWORD length, DWORD& read) = 0;
    virtual DWORD write(const void* buffer, DWORD length) = 0;
};

/// A client's end.
class PipeClient : public PipeObject
{
public:
    static std::shared_ptr<PipeClient> open(const std::string& name, DWORD& error);

    explicit PipeClient(PipeConnection connection);
    DWORD read(void* buffer, DWORD length, DWORD& read) override;
    DWORD write(const void* buffer, DWORD length) override;

private:
    std::mutex mutex;
    PipeStream stream;
    bool buffered;
};

/// A server's instance. Its socket queues exactly one client. While the instance is connected or
/// disconnected, a connection of its own (the plug) fills that queue, so that every other client
/// finds the pipe busy.
class PipeInstance : public PipeObject
{
public:
    static std::shared_ptr<PipeInstance> create(const std::string& name, DWORD pipeMode,
                                                DWORD mostInstances, bool buffered, DWORD& error);

    PipeInstance(const PipeFolder& pipe, std::string path, FileDescriptor socket, bool byMessage);
    ~PipeInstance() override;

    DWORD connect();
    DWORD disconnect();
    DWORD read(void* buffer, DWORD length, DWORD& read) override;
    DWORD write(const void* buffer, DWORD length) override;

private:
    enum class State { listening, connected, disconnected };

    bool hasQueuedClient() const;
    void takeQueuedClient();
    void listenAgain();
    DWORD readiness();

    std::mutex mutex;
    PipeFolder folder;
    std::string socketPath;
    FileDescriptor listener;
    FileDescriptor plug;
    std::optional<PipeStream> stream;
    State state = State::listening;
    bool messageMode;
};
