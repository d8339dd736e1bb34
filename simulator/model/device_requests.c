#include "simulator/model/device_codes.h"
#include "simulator/model/model_internal.h"

/* Each handler reads all of the input before it writes the output: they may share memory. It
 * returns the number of bytes stored, or refuses through `error`. */
typedef uint32_t (*Handler)(SimModel* model, const SimCall* call, uint32_t* error);

static uint32_t answer32(const SimCall* call, uint32_t value)
{
    simStore32(call->output, value);
    return 4;
}

static uint32_t readSampleRate(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    return answer32(call, model->state.engine.sampleRate);
}

static uint32_t readBufferSize(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    return answer32(call, model->state.engine.bufferSize);
}

static uint32_t readUsbLatency(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    return answer32(call, model->state.engine.usbLatency);
}

static uint32_t readProductId(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    return answer32(call, model->state.productId);
}

/* Nothing is known of this number but that it is read. */
static uint32_t readValue32(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)model;
    (void)error;
    return answer32(call, 0);
}

/* The setters of one 32-bit number. */
static uint32_t setNumber(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    const uint32_t value = simLoad32(call->input);
    switch (call->code) {
    case SIM_CODE_SET_SAMPLE_RATE:
        model->state.engine.sampleRate = value;
        break;
    case SIM_CODE_SET_BUFFER_SIZE:
        model->state.engine.bufferSize = value;
        break;
    case SIM_CODE_SET_USB_LATENCY:
        model->state.engine.usbLatency = value;
        break;
    default:
        model->state.wdmChannels = value;
        break;
    }
    return 0;
}

/* The commands that are nothing but their code. */
static uint32_t switchState(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    switch (call->code) {
    case SIM_CODE_STOP_AUDIO:
        model->state.engineState = SIM_ENGINE_STOPPED;
        break;
    case SIM_CODE_START_AUDIO:
        model->state.engineState = SIM_ENGINE_RUNNING;
        break;
    case SIM_CODE_INIT_AUDIO:
        model->state.engineState = SIM_ENGINE_INITIALISED;
        break;
    default:
        model->state.slowMode = call->code == SIM_CODE_SLOW_MODE_ON;
        break;
    }
    return 0;
}

static uint32_t writeMixer(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    for (size_t i = 0; i < SIM_MIXER_CELLS; ++i)
        model->mixer[i] = simLoad64(call->input + 8 * i);
    ++model->state.mixerWrites;
    return 0;
}

static uint32_t readLevels(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    for (uint32_t i = 0; i < SIM_LEVELS; ++i) {
        const int32_t level =
            model->state.levelsMove ? simMovingLevel(i, call->timeMs) : model->levels[i];
        simStore32(call->output + 4 * (size_t)i, (uint32_t)level);
    }
    return 4 * SIM_LEVELS;
}

static uint32_t readUsbStatus(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    simStore16(call->output, model->state.usbStatus.statusWord);
    call->output[2] = model->state.usbStatus.statusByte;
    simStore32(call->output + 3, model->state.usbStatus.errorCount);
    return SIM_USB_STATUS_BYTES;
}

static uint32_t writeValue16(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    model->state.value16 = (uint16_t)simLoad16(call->input);
    return 0;
}

static uint32_t readValue16(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    simStore16(call->output, model->state.value16);
    return 2;
}

static uint32_t writeValue8(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    model->state.value8 = call->input[0];
    return 0;
}

static uint32_t readFlag8(SimModel* model, const SimCall* call, uint32_t* error)
{
    (void)error;
    call->output[0] = model->state.value8;
    return 1;
}

/* The slot for this packet's opcode and channel. With all slots taken the last one is reused. */
static SimCommand* commandSlot(SimModel* model, const uint8_t* packet)
{
    for (uint32_t i = 0; i < model->commandCount; ++i) {
        SimCommand* const slot = &model->commands[i];
        if (slot->packet[1] == packet[1] && slot->packet[4] == packet[4])
            return slot;
    }
    if (model->commandCount < SIM_COMMANDS)
        ++model->commandCount;
    SimCommand* const slot = &model->commands[model->commandCount - 1];
    slot->count = 0;
    return slot;
}

static uint32_t takeCommand(SimModel* model, const SimCall* call, uint32_t* error)
{
    uint8_t packet[SIM_PACKET_BYTES];
    simZero(packet, sizeof packet);
    simCopy(packet, call->input, call->inputLength);
    if (packet[0] != 1) {
        *error = SIM_ERROR_INVALID_PARAMETER;
        return 0;
    }
    SimCommand* const slot = commandSlot(model, packet);
    ++slot->count;
    simCopy(slot->packet, packet, sizeof packet);
    ++model->state.commands;
    if (packet[1] == SIM_OPCODE_PHONE_CHIP_ON)
        model->state.phoneChip = 1;
    else if (packet[1] == SIM_OPCODE_PHONE_CHIP_OFF)
        model->state.phoneChip = 0;
    return 0;
}

static uint32_t transfer(SimModel* model, const SimCall* call, uint32_t* error)
{
    const uint8_t marker = call->input[0];
    const uint8_t opcode = call->input[1];
    if (marker != 1) {
        *error = SIM_ERROR_INVALID_PARAMETER;
        return 0;
    }
    simZero(call->output, SIM_TRANSFER_REPLY_BYTES);
    if (opcode == SIM_OPCODE_FIRMWARE_VERSION)
        simCopy(call->output, model->state.firmware, SIM_FIRMWARE_BYTES);
    return SIM_TRANSFER_REPLY_BYTES;
}

/* What the driver demands of the buffers. A larger output buffer is fine. A packet may be shorter
 * than its frame as long as it has an opcode; the missing bytes count as zero. */
static const struct
{
    uint32_t code;
    uint32_t leastInput;
    uint32_t mostInput;
    uint32_t leastOutput;
    Handler handler;
} requests[] = {
    {SIM_CODE_READ_SAMPLE_RATE, 0, 0, 4, readSampleRate},
    {SIM_CODE_SET_SAMPLE_RATE, 4, 4, 0, setNumber},
    {SIM_CODE_WRITE_MIXER, SIM_MIXER_BYTES, SIM_MIXER_BYTES, 0, writeMixer},
    {SIM_CODE_SET_BUFFER_SIZE, 4, 4, 0, setNumber},
    {SIM_CODE_READ_BUFFER_SIZE, 0, 0, 4, readBufferSize},
    {SIM_CODE_READ_USB_LATENCY, 0, 0, 4, readUsbLatency},
    {SIM_CODE_SET_USB_LATENCY, 4, 4, 0, setNumber},
    {SIM_CODE_READ_LEVELS, 0, 0, 4 * SIM_LEVELS, readLevels},
    {SIM_CODE_STOP_AUDIO, 0, 0, 0, switchState},
    {SIM_CODE_INIT_AUDIO, 0, 0, 0, switchState},
    {SIM_CODE_START_AUDIO, 0, 0, 0, switchState},
    {SIM_CODE_READ_PRODUCT_ID, 0, 0, 4, readProductId},
    {SIM_CODE_SET_WDM_CHANNELS, 4, 4, 0, setNumber},
    {SIM_CODE_SLOW_MODE_ON, 0, 0, 0, switchState},
    {SIM_CODE_SLOW_MODE_OFF, 0, 0, 0, switchState},
    {SIM_CODE_COMMAND, 2, SIM_PACKET_BYTES, 0, takeCommand},
    {SIM_CODE_TRANSFER, 2, SIM_PACKET_BYTES, SIM_TRANSFER_REPLY_BYTES, transfer},
    {SIM_CODE_READ_VALUE32, 0, 0, 4, readValue32},
    {SIM_CODE_WRITE_VALUE16, 2, 2, 0, writeValue16},
    {SIM_CODE_READ_VALUE16, 0, 0, 2, readValue16},
    {SIM_CODE_WRITE_VALUE8, 1, 1, 0, writeValue8},
    {SIM_CODE_READ_FLAG8, 0, 0, 1, readFlag8},
    {SIM_CODE_READ_USB_STATUS, 0, 0, SIM_USB_STATUS_BYTES, readUsbStatus},
};

SimAnswer simExecute(SimModel* model, const SimCall* call)
{
    SimAnswer answer = {SIM_ERROR_INVALID_FUNCTION, 0, 0};
    for (size_t i = 0; i < sizeof requests / sizeof *requests; ++i) {
        if (requests[i].code != call->code)
            continue;
        answer.error = SIM_ERROR_NONE;
        if (call->inputLength < requests[i].leastInput || call->inputLength > requests[i].mostInput)
            answer.error = SIM_ERROR_INVALID_PARAMETER;
        else if (call->outputLength < requests[i].leastOutput)
            answer.error = SIM_ERROR_INSUFFICIENT_BUFFER;
        else
            answer.returned = requests[i].handler(model, call, &answer.error);
    }
    return answer;
}

int32_t simMovingLevel(uint32_t slot, uint32_t timeMs)
{
    const uint32_t period = 1200 + 37 * (slot % 32);
    const uint32_t phase = (timeMs + 211 * slot) % period;
    const uint32_t half = period / 2;
    const uint32_t distance = phase < half ? half - phase : phase - half;
    /* Eleven halvings, about 66 dB, from the quiet end to the loud one, linear within each. */
    const uint32_t position = distance * 11 * 1024 / (period - half);
    const uint32_t loud = 0x7FFFFFFFu >> (position / 1024);
    const uint32_t step = (uint32_t)((uint64_t)(loud - loud / 2) * (position % 1024) / 1024);
    return (int32_t)(loud - step);
}
