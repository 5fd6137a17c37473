#include "support/library_story.h"

#include <cstdlib>
#include <limits>
#include <map>

namespace story {

namespace {

using Way = CallFault::Way;
using Faults = std::vector<CallFault>;

const qint64 LargestInt = std::numeric_limits<int>::max();
const qint64 SmallestInt = std::numeric_limits<int>::min();
const qint64 Largest = std::numeric_limits<qint64>::max();
const qint64 Smallest = std::numeric_limits<qint64>::min();
const qint64 TwoGiB = qint64(1) << 31;
const qint64 OneTiB = qint64(1) << 40;

// The number behind the last comma, or behind the bracket: how many bytes were asked for.
qint64 lastArgument(const std::string &line)
{
    const std::size_t end = line.find(')');
    return std::atoll(line.c_str() + line.find_last_of(",(", end) + 1);
}

qint64 numberBehindArrow(const std::string &line)
{
    return std::atoll(line.c_str() + line.find(" -> ") + 4);
}

Faults readFaults(qint64 asked, qint64 given)
{
    Faults faults = {{Way::Refused, -1},
                     {Way::Refused, SmallestInt},
                     {Way::Lied, asked + 1},
                     {Way::Lied, LargestInt},
                     {Way::Refused, 0}};
    if (given < asked)
        faults.push_back({Way::Lied, given + 1});
    if (given > 0) {
        const Faults others = {{Way::Cut, given / 2},
                               {Way::Cut, 1},
                               {Way::Lied, given - 1},
                               {Way::Lied, 0},
                               {Way::Feigned, 0}};
        faults.insert(faults.end(), others.begin(), others.end());
    }
    return faults;
}

Faults writeFaults(qint64 asked)
{
    return {{Way::Refused, 0},      {Way::Refused, -1},      {Way::Cut, asked / 2},
            {Way::Lied, asked + 1}, {Way::Lied, LargestInt}, {Way::Lied, asked - 1},
            {Way::Feigned, 0}};
}

Faults seekFaults(qint64 result)
{
    return {{Way::Refused, -1}, {Way::Refused, result + 1}, {Way::Lied, result + 1},
            {Way::Lied, -1},    {Way::Lied, Largest},       {Way::Lied, Smallest},
            {Way::Feigned, 0}};
}

// Of a position or a file's size.
Faults sizeFaults(qint64 size)
{
    Faults faults;
    for (const qint64 lie : {qint64(0), size - 1, size + 1000, qint64(-1), TwoGiB - 1, TwoGiB,
                             TwoGiB * 2 + size, OneTiB, Largest, Smallest}) {
        if (lie != size)
            faults.push_back({Way::Lied, lie});
    }
    return faults;
}

// Of a look-up in the device's database, or of its parse.
Faults lookUpFaults()
{
    return {{Way::Refused, -1}, {Way::Refused, 1}, {Way::Refused, SmallestInt}, {Way::Lied, -1}};
}

Faults truthFaults(bool truth)
{
    return {{Way::Lied, !truth}};
}

} // namespace

std::vector<CallFault> waysToFail(const std::string &line)
{
    const std::string operation = operationOf(line);
    if (operation == "vFileRead")
        return readFaults(lastArgument(line), numberBehindArrow(line));
    if (operation == "vFileWrite")
        return writeFaults(lastArgument(line));
    if (operation == "vFileSeek")
        return seekFaults(numberBehindArrow(line));
    if (operation == "vFileTell" || operation == "vDevFileSize")
        return sizeFaults(numberBehindArrow(line));
    if (operation == "isAccessBlocked" || operation == "isIOSDevice")
        return truthFaults(line.find("-> true") != std::string::npos);
    if (operation == "vDevCreateDir")
        return {{Way::Refused, 0}, {Way::Lied, 0}};
    if (operation == "iphotolib::getPhoto" || operation == "iphotolib::getAlbum" ||
        operation == "iitdb::parse" || operation == "unpackiThmb")
        return lookUpFaults();
    const bool isList = operation == "iphotolib::photoIDs" || operation == "iphotolib::albumIDs";
    const bool hasResult = isList || line.find(" -> ") != std::string::npos;
    const bool failsAnyway = line.find(" -> null") != std::string::npos;
    return hasResult && !failsAnyway ? Faults{{Way::Refused, 0}} : Faults();
}

CallFault refusal(const std::string &operation)
{
    static const std::map<std::string, CallFault> others = {
        {"vFileRead", {Way::Refused, -1}},           {"vFileWrite", {Way::Refused, -1}},
        {"vFileSeek", {Way::Refused, -1}},           {"vFileTell", {Way::Refused, -1}},
        {"isAccessBlocked", {Way::Lied, 1}},         {"iphotolib::getPhoto", {Way::Refused, -1}},
        {"iphotolib::getAlbum", {Way::Refused, -1}}, {"iitdb::parse", {Way::Refused, -1}},
        {"unpackiThmb", {Way::Refused, -1}},
    };
    const auto found = others.find(operation);
    return found == others.end() ? CallFault{Way::Refused, 0} : found->second;
}

} // namespace story
