#include "oracle/troubles.h"

namespace Oracle {

namespace {

const std::string wholeFolder = "folder";

Trouble::Kind kindOf(const std::string& name)
{
    using Kind = Trouble::Kind;
    static const std::map<std::string, Kind> kinds{
        {"unwritable", Kind::unwritable}, {"full", Kind::full},
        {"readonly", Kind::readOnly},     {"keptopen", Kind::keptOpen},
        {"folder", Kind::folder},         {"unreadable", Kind::unreadable}};
    return kinds.at(name);
}

} // namespace

bool Troubles::apply(const Action& action, long long requests)
{
    if (action.verb == "mend") {
        list.clear();
        return true;
    }
    if (action.verb != "trouble")
        return false;
    Trouble trouble{kindOf(action.at(1)), requests + action.number(2), Trouble::always};
    if (const long long lasts = action.number(3); lasts > 0)
        trouble.end = trouble.begin + lasts;
    list[action.at(0)] = trouble;
    return true;
}

bool Troubles::has(const std::string& file, Trouble::Kind kind, long long requests) const
{
    return isOn(file, kind, requests) || isOn(wholeFolder, kind, requests);
}

bool Troubles::isOn(const std::string& place, Trouble::Kind kind, long long requests) const
{
    const auto found = list.find(place);
    if (found == list.end() || found->second.kind != kind)
        return false;
    const Trouble& trouble = found->second;
    return requests >= trouble.begin && (trouble.end == Trouble::always || requests < trouble.end);
}

} // namespace Oracle
