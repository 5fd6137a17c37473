#ifndef PHOTOLIB_CLI_EXPORT_PREVIEW_H
#define PHOTOLIB_CLI_EXPORT_PREVIEW_H

struct ExportPlan;
class Output;

// What an export would do, for those who look before they leap. Both throw Error like `output`.

/// As a table of what would be copied where, with what the device does not have or give.
void writePreviewTable(const ExportPlan &plan, Output &output);

/// As a JSON object that docs/json.md describes.
void writePreviewAsJson(const ExportPlan &plan, Output &output);

#endif // PHOTOLIB_CLI_EXPORT_PREVIEW_H
