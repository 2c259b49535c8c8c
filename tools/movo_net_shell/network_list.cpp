/** `wifi list`: a table of fixed columns for a file or a pipe, and on a terminal one that fits. */
#include "glue.h"
#include "networks.h"
#include "text.h"

#include <algorithm>
#include <vector>

namespace shell {
namespace {
constexpr std::size_t kGap = 2; // between columns, and the width of the mark
constexpr std::size_t kLeastName = 12;

/** What the table has of a network, one cell a column. */
struct Row {
    std::vector<std::string> cells;
    bool isJoined;
};

/** A column of the table on a terminal. */
struct Column {
    const Fact* fact;
    std::size_t width;
};

std::string lineOf(const std::vector<std::string>& cells, const std::vector<Column>& columns)
{
    std::string line;
    for (std::size_t i = 0; i < columns.size(); i++) {
        line += padded(cells[i], columns[i].width);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string cellOf(const Screen& screen, const Fact& fact, const std::string& ifname, const std::string& essid)
{
    const std::string value = fact.value(ifname.c_str(), essid.c_str());
    const auto level = fact.isSignal ? parseInt(value) : std::nullopt;
    return level ? screen.bars(*level) + value : value;
}

std::vector<Column> columnsOfFile()
{
    std::vector<Column> columns;
    for (const Fact& each : networkFacts()) {
        if (each.width > 0) {
            columns.push_back({&each, each.width});
        }
    }
    return columns;
}

std::size_t widthOf(const std::vector<Column>& columns)
{
    std::size_t width = 0; // the mark before the first is as wide as the gap that the last does not need
    for (const Column& each : columns) {
        width += each.width;
    }
    return width;
}

/** As wide as what they hold. */
void widen(std::vector<Column>& columns, const std::vector<Row>& rows)
{
    for (std::size_t i = 0; i < columns.size(); i++) {
        columns[i].width = shownColumns(columns[i].fact->label) + kGap;
        for (const Row& row : rows) {
            columns[i].width = std::max(columns[i].width, shownColumns(row.cells[i]) + kGap);
        }
    }
}

/** Takes the least important away where there is no room for all. */
void thin(std::vector<Column>& columns, std::vector<Row>& rows, std::size_t room)
{
    const auto importance = [](const Column& column) { return column.fact->importance; };
    while (widthOf(columns) > room) {
        const auto least = std::ranges::min_element(columns, {}, importance);
        if (importance(*least) == Fact::kAlways) {
            return;
        }
        for (Row& row : rows) {
            row.cells.erase(row.cells.begin() + (least - columns.begin()));
        }
        columns.erase(least);
    }
}

/** Cuts the ends of names off where that is not enough. */
void cutNames(std::vector<Column>& columns, std::vector<Row>& rows, std::size_t room)
{
    const std::size_t wide = widthOf(columns);
    if (wide <= room) {
        return;
    }
    const std::size_t spare = columns[0].width - std::min(columns[0].width, kLeastName);
    columns[0].width -= std::min(wide - room, spare);
    for (Row& row : rows) {
        row.cells[0] = shortened(row.cells[0], columns[0].width - kGap);
    }
}

std::vector<Row> readRows(const Screen& screen, const std::string& ifname, const std::vector<Column>& columns)
{
    std::vector<Row> rows;
    const std::string joined = joinedName(ifname.c_str());
    for (const std::string& essid : tableNames(ifname)) {
        Row row = {{}, essid == joined};
        for (const Column& each : columns) {
            row.cells.push_back(cellOf(screen, *each.fact, ifname, essid));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string headOf(const std::vector<Column>& columns)
{
    std::vector<std::string> labels;
    labels.reserve(columns.size());
    for (const Column& each : columns) {
        labels.emplace_back(each.fact->label);
    }
    return lineOf(labels, columns);
}

std::string tableForFile(const std::string& ifname)
{
    const std::vector<Column> columns = columnsOfFile();
    std::string table = headOf(columns) + "\n";
    for (const Row& row : readRows(Screen(), ifname, columns)) {
        table += lineOf(row.cells, columns) + "\n";
    }
    return table;
}

/** The joined network has a mark in place of its column. */
std::string tableForScreen(const Screen& screen, const std::string& ifname)
{
    std::vector<Column> columns = columnsOfFile();
    std::erase_if(columns, [](const Column& column) { return column.fact->importance == Fact::kMarked; });
    std::vector<Row> rows = readRows(screen, ifname, columns);
    widen(columns, rows);
    thin(columns, rows, screen.columns());
    cutNames(columns, rows, screen.columns());
    std::string table = screen.styled(Style::Head, "  " + headOf(columns)) + "\n";
    for (const Row& row : rows) {
        const std::string line = (row.isJoined ? "* " : "  ") + lineOf(row.cells, columns);
        table += (row.isJoined ? screen.styled(Style::Good, line) : line) + "\n";
    }
    return table;
}
} // namespace

Outcome listNetworks(Console& console, Arguments /*arguments*/)
{
    const std::string ifname = wifiName();
    int count = 0;
    const RETURN_TYPE code = Movo_NET_GetNumOfWifiEsss(kAppId, ifname.c_str(), &count);
    console.result(code, std::to_string(count));
    if (code == 0) {
        const Screen& screen = console.screen();
        console.print("%s", (screen.isTerminal() ? tableForScreen(screen, ifname) : tableForFile(ifname)).c_str());
    }
    return Outcome::Done;
}
} // namespace shell
