#include "random/timing_cases.h"

#include "random/scenes.h"

using Oracle::parseSequence;
using Scene::Actions;
using Scene::append;
using Scene::Model;

namespace {

/// Something that takes its time.
struct Course
{
    const char* name;
    const char* before; ///< once the panel stands
    const char* start;
    int lasts; ///< milliseconds, and some more
};

constexpr Course courses[] = {
    {"buffer size", "tray setup\n", "combo 0 last\n", 400},
    {"smaller buffer", "tray setup\ncombo 0 last\ncombo 1 last\n", "combo 0 first\n", 400},
    {"latency", "tray setup\n", "combo 1 last\n", 400},
    {"sample rate", "tray setup\n", "combo 2 last\n", 700},
    {"safe mode", "tray setup\n", "combo 3 last\n", 400},
    {"reset", "tray setup\nresetpipe serves\n", "dialog ok\n", 100},
    {"upgrade", "", "tray upgrade\n", 100},
    {"removal", "", "unplug\n", 1300},
};

constexpr int arrivalLasts = 1700;
constexpr int step = 50;

/// What happens outside, whatever the panel is waiting for.
constexpr const char* outside[] = {
    "unplug",
    "plug 1 0", // the same place, but nothing that was open lives on
    "plug 2 3", "plug 15 0", "plug 77 1",
};

/// What reaches the program as soon as it listens again.
constexpr const char* inside[] = {
    "quit\n",
    "message %00%00%00%00%00%00%00%00%00%00%00%00%00%00%00%00%01%00%00%00\n",
    "nomessage\n",
    "secondcopy\n",
    "closewindow\n",
    "dialog close\n",
    "tray upgrade\n",
    "tray explorer 0\n",
    "tray setup\ncombo 2 last\ncombo 2 first\n",
    "tray setup\ncombo 0 down\ncombo 1 last\ncombo 3 last\n",
    "jump 10800000\n",                        // the system slept
    "plug 2 0\njump 10800000\nwait 1\n",      // and all handles died
    "unplug\njump 400\nplug 1 0\nwait 600\n", // out and in again within one look
};

std::string number(int value)
{
    return std::to_string(value);
}

Actions after(const Model& model)
{
    Actions rest = parseSequence("wait 2500\nstart en_US\ntray main\n");
    append(rest, Scene::recover(model));
    return rest;
}

void addMoments(std::vector<MatrixCase>& cases, const Model& model, const std::string& name,
                const Actions& before, const Actions& start, int lasts)
{
    const auto add = [&](const std::string& moment, const Actions& first, const Actions& then) {
        Actions sequence = before;
        append(sequence, first);
        append(sequence, then);
        append(sequence, after(model));
        cases.push_back({std::string(model.name) + ' ' + name + ' ' + moment, sequence});
    };
    for (int moment = 0; moment <= lasts; moment += step) {
        for (const char* change : outside) {
            const std::string plan = "at " + number(moment) + ' ' + change;
            Actions first = parseSequence(plan + '\n');
            append(first, start);
            add(plan, first, parseSequence("wait 700\n"));
        }
        for (const char* change : inside) {
            Actions then = {{"wait", {number(moment)}}};
            append(then, parseSequence(change));
            add("after " + number(moment) + ": " + change, start, then);
        }
    }
}

} // namespace

std::vector<MatrixCase> timingCases()
{
    std::vector<MatrixCase> cases;
    for (const Model& model : Scene::models) {
        addMoments(cases, model, "arrival", Scene::begin(),
                   {{"plug", {std::to_string(model.productId), "0"}}}, arrivalLasts);
        for (const Course& course : courses) {
            Actions before = Scene::begin();
            append(before, Scene::plug(model));
            append(before, parseSequence(course.before));
            addMoments(cases, model, course.name, before, parseSequence(course.start),
                       course.lasts);
        }
    }
    return cases;
}
