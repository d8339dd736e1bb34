#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <vector>

namespace Oracle {

/// One request to the driver as it crosses the border.
struct Request
{
    int handle = 0; ///< counted from 1 in the order of opening
    std::uint32_t code = 0;
    std::vector<std::uint8_t> input;
    std::size_t outputSize = 0;
};

struct Answer
{
    std::uint32_t error = 0; ///< a Windows error number, 0 = success
    std::vector<std::uint8_t> bytes;
    int delayMs = 0;
    bool throws = false; ///< an exception, which says "no paper", escapes from the request
};

/// What befalls requests with `code`: the first `skip` of them pass, the next `count` are hit.
struct Fault
{
    enum class Kind { fail, delay, shorten, raise };
    Kind kind = Kind::fail;
    std::uint32_t code = 0;
    int count = 0; ///< `always` for all that follow
    int skip = 0;
    std::uint32_t value = 0; ///< error number, milliseconds or bytes

    static constexpr int always = -1;
};

/// The attached interface together with its driver: what they answer, and what can befall them.
/// The panel under test and the oracle have one each; both see the same world.
class Interface
{
public:
    static constexpr int buses = 16;
    static constexpr std::size_t mixerBytes = 66304;

    void plug(std::uint32_t productId, int bus);
    void unplug() { plugged = false; }

    /// Lets the interface's own clock go on, in milliseconds, with what is planned until then.
    /// Everybody who asks it something does so first.
    void reach(long long moment);
    /// Something that happens outside in so many milliseconds, whatever the panel waits for then.
    void plan(long long milliseconds, std::function<void(Interface&)> change);

    /// Opens the device path of that bus: 0 or a Windows error number.
    std::uint32_t open(int bus);
    /// The number of the handle that open() has just given out.
    int lastHandle() const { return handles; }

    Answer ask(const Request& request);
    /// How many have been asked.
    long long requests() const { return asked; }

    void addFault(const Fault& fault) { faults.push_back(fault); }
    void heal();
    /// The codes of the requests that a fault has refused.
    const std::set<std::uint32_t>& refusedCodes() const { return refused; }
    /// Of the opens of a present device, `skip` succeed and then `count` fail with `error`.
    void failOpens(int count, std::uint32_t error, int skip);

    std::uint32_t sampleRate = 44100;
    std::uint32_t bufferSize = 192;
    std::uint32_t latency = 24;
    std::uint32_t usbErrors = 0;
    std::array<std::int32_t, 4> levels{}; ///< slots 0 to 3, the others are silent
    std::array<std::uint8_t, 10> firmware{'1', '.', '0', '.', '7'};

private:
    struct Fate
    {
        std::uint32_t error = 0;
        int delayMs = 0;
        std::size_t largestAnswer = SIZE_MAX;
        bool throws = false;
    };

    struct Plan
    {
        long long moment;
        std::function<void(Interface&)> change;
    };

    Fate takeFaults(std::uint32_t code);
    Answer execute(const Request& request);

    long long clock = 0;
    std::vector<Plan> plans; ///< earliest first
    long long asked = 0;
    bool plugged = false;
    std::uint32_t productId = 0;
    int bus = 0;
    int handles = 0;       ///< given out so far
    int handlesBefore = 0; ///< those of an interface that was plugged in before: dead
    std::vector<Fault> faults;
    std::set<std::uint32_t> refused;
    int opensToPass = 0;
    int opensToFail = 0;
    std::uint32_t openError = 0;
};

} // namespace Oracle
