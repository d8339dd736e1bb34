#include "random/record.h"

#include <QString>
#include <QtGlobal>

#include <cstdio>
#include <iostream>
#include <mutex>
#include <thread>
#include <utility>

namespace {

std::mutex mutex;
std::vector<std::string> events;
std::vector<std::string> threadLines;
std::thread::id guiThread;

/// What the toolkit says of a platform without a screen.
bool isOfTheScreenless(const std::string& line)
{
    return line.starts_with("This plugin does not support ") ||
           line.find("QPlatformNativeInterface::systemTrayWindowChanged") != std::string::npos;
}

void note(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    const std::string line = text.toStdString();
    if (isOfTheScreenless(line))
        return;
    if (type == QtFatalMsg)
        std::printf("%s\n", line.c_str());
    const std::lock_guard lock(mutex);
    if (std::this_thread::get_id() != guiThread)
        threadLines.push_back(line);
    else
        events.push_back((type == QtDebugMsg ? "debug: " : "warning: ") + line);
}

/// Notes each line that is written to a stream.
template <typename Char> class LineSink : public std::basic_streambuf<Char>
{
public:
    explicit LineSink(const char* streamName)
        : name(streamName)
    {
    }

protected:
    using Traits = typename std::basic_streambuf<Char>::traits_type;

    typename Traits::int_type overflow(typename Traits::int_type character) override
    {
        if (Traits::eq_int_type(character, Traits::eof()))
            return Traits::not_eof(character);
        const auto letter = static_cast<char>(Traits::to_char_type(character));
        if (letter == '\n')
            Record::add(name + std::exchange(line, {}));
        else
            line += letter;
        return character;
    }

private:
    std::string name;
    std::string line;
};

LineSink<wchar_t> output("out: ");
LineSink<char> errors("error: ");
std::streambuf* realErrors = nullptr;
std::wstreambuf* realOutput = nullptr;

} // namespace

void Record::add(const std::string& event)
{
    const std::lock_guard lock(mutex);
    (std::this_thread::get_id() == guiThread ? events : threadLines).push_back(event);
}

std::vector<std::string> Record::takeEvents()
{
    const std::lock_guard lock(mutex);
    return std::exchange(events, {});
}

std::vector<std::string> Record::takeThreadLines()
{
    const std::lock_guard lock(mutex);
    return std::exchange(threadLines, {});
}

void Record::begin()
{
    guiThread = std::this_thread::get_id();
    qInstallMessageHandler(note);
    realOutput = std::wcout.rdbuf(&output);
    realErrors = std::cerr.rdbuf(&errors);
}

void Record::end()
{
    std::wcout.rdbuf(realOutput);
    std::cerr.rdbuf(realErrors);
}
