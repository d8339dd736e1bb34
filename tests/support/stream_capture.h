#pragma once

#include <ios>
#include <sstream>
#include <string>
#include <vector>

/// Catches what is written to a standard stream, such as std::cerr or std::wcout, until it is
/// destroyed.
template <typename Char> class StreamCapture
{
public:
    explicit StreamCapture(std::basic_ios<Char>& captured)
        : stream(captured)
        , previous(captured.rdbuf(buffer.rdbuf()))
    {
    }
    ~StreamCapture() { stream.rdbuf(previous); }
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;

    /// The lines since the last call, without their ends. Text after the last line end counts as a
    /// line that reads "(unended) ...".
    std::vector<std::string> takeLines()
    {
        std::vector<std::string> lines;
        std::string line;
        for (const Char character : buffer.str()) {
            if (character == Char('\n'))
                lines.push_back(std::exchange(line, {}));
            else
                line.push_back(static_cast<char>(character));
        }
        if (!line.empty())
            lines.push_back("(unended) " + line);
        buffer.str({});
        return lines;
    }

private:
    std::basic_ostringstream<Char> buffer;
    std::basic_ios<Char>& stream;
    std::basic_streambuf<Char>* previous;
};
