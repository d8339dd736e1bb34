#include "simulator/model/device_codes.h"
#include "simulator/model/model_internal.h"

static void traceChangedCells(SimModel* model, SimRequest* record, const uint8_t* table)
{
    for (uint32_t i = 0; i < SIM_MIXER_CELLS; ++i) {
        const uint64_t bits = simLoad64(table + 8 * (size_t)i);
        if (bits == model->mixer[i])
            continue;
        SimCell* const cell = &model->cells[model->cellTotal % SIM_TRACE_CELLS];
        cell->index = i;
        cell->low = (uint32_t)bits;
        cell->high = (uint32_t)(bits >> 32);
        ++model->cellTotal;
        ++record->changedCells;
    }
}

SimRequest* simTraceRequest(SimModel* model, uint32_t handle, const SimCall* call)
{
    SimRequest* const record = &model->requests[model->requestTotal % SIM_TRACE_REQUESTS];
    ++model->requestTotal;
    simZero(record, sizeof *record);
    record->sequence = model->requestTotal;
    record->firstCell = model->cellTotal;
    record->timeMs = call->timeMs;
    record->handle = handle;
    record->code = call->code;
    record->inputLength = call->inputLength;
    record->outputLength = call->outputLength;
    simCopy(record->input, call->input,
            call->inputLength < SIM_TRACED_INPUT ? call->inputLength : SIM_TRACED_INPUT);
    if (call->code == SIM_CODE_WRITE_MIXER && call->inputLength == SIM_MIXER_BYTES)
        traceChangedCells(model, record, call->input);
    return record;
}

static uint64_t larger(uint64_t a, uint64_t b)
{
    return a > b ? a : b;
}

static uint64_t oldestOf(uint64_t total, uint64_t capacity)
{
    return total > capacity ? total - capacity : 0;
}

SimAnswer simReadTrace(const SimModel* model, const SimCall* call)
{
    SimAnswer answer = {SIM_ERROR_INSUFFICIENT_BUFFER, 0, 0};
    if (call->outputLength < sizeof(SimTrace) + sizeof(SimRequest))
        return answer;
    uint64_t next = larger(simLoad64(call->input), 1) - 1;
    next =
        larger(next, larger(model->clearedUpTo, oldestOf(model->requestTotal, SIM_TRACE_REQUESTS)));
    uint32_t count = 0;
    uint32_t used = sizeof(SimTrace);
    while (next < model->requestTotal && call->outputLength - used >= sizeof(SimRequest)) {
        simCopy(call->output + used, &model->requests[next % SIM_TRACE_REQUESTS],
                sizeof(SimRequest));
        used += (uint32_t)sizeof(SimRequest);
        ++count;
        ++next;
    }
    simStore32(call->output + offsetof(SimTrace, count), count);
    simStore32(call->output + offsetof(SimTrace, recordBytes), (uint32_t)sizeof(SimRequest));
    answer.error = SIM_ERROR_NONE;
    answer.returned = used;
    return answer;
}

SimAnswer simReadCells(const SimModel* model, const SimCall* call)
{
    SimAnswer answer = {SIM_ERROR_INSUFFICIENT_BUFFER, 0, 0};
    if (call->outputLength < sizeof(SimCells) + sizeof(SimCell))
        return answer;
    uint64_t next = larger(simLoad64(call->input), oldestOf(model->cellTotal, SIM_TRACE_CELLS));
    const uint64_t first = next;
    uint32_t count = 0;
    uint32_t used = sizeof(SimCells);
    while (next < model->cellTotal && call->outputLength - used >= sizeof(SimCell)) {
        simCopy(call->output + used, &model->cells[next % SIM_TRACE_CELLS], sizeof(SimCell));
        used += (uint32_t)sizeof(SimCell);
        ++count;
        ++next;
    }
    simStore64(call->output + offsetof(SimCells, first), first);
    simStore32(call->output + offsetof(SimCells, count), count);
    simStore32(call->output + offsetof(SimCells, reserved), 0);
    answer.error = SIM_ERROR_NONE;
    answer.returned = used;
    return answer;
}

void simClearTrace(SimModel* model, uint64_t upTo)
{
    model->clearedUpTo = upTo < model->requestTotal ? upTo : model->requestTotal;
}
