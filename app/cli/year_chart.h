#ifndef PHOTOLIB_CLI_YEAR_CHART_H
#define PHOTOLIB_CLI_YEAR_CHART_H

#include <QStringList>

#include <map>

/// The lines of a bar chart of how many photos and videos were taken in which year, the longest
/// bar `width` letters long: "2019  ####  12". Years without any in between have a line, too,
/// unless the years are as far apart as those of no camera.
QStringList yearChart(const std::map<int, int> &years, int width);

#endif // PHOTOLIB_CLI_YEAR_CHART_H
