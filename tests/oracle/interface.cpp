#include "oracle/interface.h"

#include "oracle/codes.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Oracle {

namespace {

constexpr std::uint32_t fileNotFound = 2;
constexpr std::uint32_t invalidFunction = 1;
constexpr std::uint32_t notConnected = 1167;

void append32(std::vector<std::uint8_t>& bytes, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

std::vector<std::uint8_t> number(std::uint32_t value)
{
    std::vector<std::uint8_t> bytes;
    append32(bytes, value);
    return bytes;
}

std::uint32_t load32(const std::vector<std::uint8_t>& bytes)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && i < bytes.size(); ++i)
        value |= std::uint32_t{bytes[i]} << (8 * i);
    return value;
}

} // namespace

void Interface::plug(std::uint32_t newProductId, int newBus)
{
    plugged = true;
    productId = newProductId;
    bus = newBus;
    handlesBefore = handles;
}

void Interface::reach(long long moment)
{
    while (!plans.empty() && plans.front().moment <= moment) {
        const Plan next = std::move(plans.front());
        plans.erase(plans.begin());
        clock = next.moment;
        next.change(*this);
    }
    clock = moment;
}

void Interface::plan(long long milliseconds, std::function<void(Interface&)> change)
{
    const long long moment = clock + milliseconds;
    plans.insert(std::ranges::upper_bound(plans, moment, {}, &Plan::moment),
                 {moment, std::move(change)});
}

std::uint32_t Interface::open(int wantedBus)
{
    if (!plugged || wantedBus != bus)
        return fileNotFound;
    if (opensToFail != 0 && opensToPass > 0) {
        --opensToPass;
    } else if (opensToFail != 0) {
        if (opensToFail != Fault::always)
            --opensToFail;
        return openError;
    }
    ++handles;
    return 0;
}

void Interface::failOpens(int count, std::uint32_t error, int skip)
{
    opensToPass = skip;
    opensToFail = count;
    openError = error;
}

void Interface::heal()
{
    faults.clear();
    opensToFail = 0;
}

Interface::Fate Interface::takeFaults(std::uint32_t code)
{
    Fate fate;
    bool taken[4] = {};
    for (Fault& fault : faults) {
        if (fault.code != code || fault.count == 0)
            continue;
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        bool& known = taken[static_cast<int>(fault.kind)];
        if (std::exchange(known, true))
            continue;
        if (fault.kind == Fault::Kind::fail) {
            refused.insert(code);
            fate.error = fault.value;
        } else if (fault.kind == Fault::Kind::delay)
            fate.delayMs = static_cast<int>(fault.value);
        else if (fault.kind == Fault::Kind::shorten)
            fate.largestAnswer = fault.value;
        else
            fate.throws = true;
        if (fault.count != Fault::always)
            --fault.count;
    }
    std::erase_if(faults, [](const Fault& fault) { return fault.count == 0; });
    return fate;
}

Answer Interface::ask(const Request& request)
{
    ++asked;
    if (!plugged || request.handle > handles || request.handle <= handlesBefore)
        return {notConnected, {}, 0};
    const Fate fate = takeFaults(request.code);
    if (fate.throws)
        return {0, {}, 0, true};
    Answer answer{fate.error, {}, 0};
    if (fate.error == 0)
        answer = execute(request);
    answer.delayMs = fate.delayMs;
    answer.bytes.resize(std::min({answer.bytes.size(), request.outputSize, fate.largestAnswer}));
    return answer;
}

Answer Interface::execute(const Request& request)
{
    switch (request.code) {
    case Code::readProductId:
        return {0, number(productId), 0};
    case Code::readSampleRate:
        return {0, number(sampleRate), 0};
    case Code::readBufferSize:
        return {0, number(bufferSize), 0};
    case Code::readLatency:
        return {0, number(latency), 0};
    case Code::setSampleRate:
        sampleRate = load32(request.input);
        return {};
    case Code::setBufferSize:
        bufferSize = load32(request.input);
        return {};
    case Code::setLatency:
        latency = load32(request.input);
        return {};
    case Code::readUsbStatus: {
        Answer answer{0, {0x34, 0x12, 0x56}, 0};
        append32(answer.bytes, usbErrors);
        return answer;
    }
    case Code::readLevels: {
        Answer answer;
        for (const std::int32_t level : levels)
            append32(answer.bytes, static_cast<std::uint32_t>(level));
        answer.bytes.resize(768);
        return answer;
    }
    case Code::transfer: {
        Answer answer{0, {firmware.begin(), firmware.end()}, 0};
        answer.bytes.resize(32, 0xEE); // What follows the version is nobody's business.
        return answer;
    }
    default: {
        const bool known = std::ranges::find(Code::all, request.code) != std::end(Code::all);
        return {known ? 0 : invalidFunction, {}, 0};
    }
    }
}

} // namespace Oracle
