#pragma once

#include "port/handle_table.h"
#include "port/pipe_listener.h"
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
    /// A client's end; null with the error number in `error` when the pipe takes none.
    static std::shared_ptr<PipeObject> open(const std::string& name, DWORD& error);

    PipeObject() = default;
    explicit PipeObject(PipeStream connected);

    DWORD read(void* buffer, DWORD length, DWORD& read);
    DWORD write(const void* buffer, DWORD length);

protected:
    /// ERROR_SUCCESS when there is a stream.
    virtual DWORD readiness() { return ERROR_SUCCESS; }

    std::mutex mutex;
    std::optional<PipeStream> stream;
};

/// The server's end, which a client at a time can connect to.
class PipeInstance : public PipeObject
{
public:
    static std::shared_ptr<PipeInstance> create(const std::string& name, DWORD outputSize,
                                                DWORD inputSize, DWORD& error);

    PipeInstance(std::unique_ptr<PipeListener> clients, DWORD outputSize);

    DWORD connect();
    DWORD disconnect();

protected:
    DWORD readiness() override;

private:
    bool isListening() const { return !clientLock.isValid(); }
    bool takeClient();
    void listen();

    std::unique_ptr<PipeListener> listener;
    DWORD bufferSize;
    FileDescriptor clientLock; ///< From a client's coming until the next one is waited for.
};
