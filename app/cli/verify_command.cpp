#include "base/byte_count.h"
#include "base/error.h"
#include "base/printable.h"
#include "cli/command.h"
#include "cli/exit_codes.h"
#include "cli/interruptible_run.h"
#include "cli/output.h"
#include "cli/reported_work.h"
#include "engine/export_verify.h"
#include "engine/json_writer.h"

#include <CLI/CLI.hpp>

namespace {

struct VerifyArguments {
    std::string folder; ///< the bytes of the command line
    bool isJson = false;
};

// How the verification goes, on stderr.
class VerifyReport : public VerifyObserver
{
public:
    explicit VerifyReport(ReportedWork &work) : m_work(work) {}

    void verified(const VerifyProgress &progress) override
    {
        m_work.show({QStringLiteral("Verifying"), progress.doneBytes, progress.totalBytes,
                     QStringLiteral("%1 of %2 files, %3")
                         .arg(QString::number(progress.doneFiles), QString::number(progress.files),
                              byteCountsText(progress.doneBytes, progress.totalBytes))});
    }

private:
    ReportedWork &m_work;
};

// In the order in which they are told.
constexpr VerifiedState verifiedStates[] = {VerifiedState::Good, VerifiedState::Changed,
                                            VerifiedState::Missing, VerifiedState::Extra};

// "changed  2020/01/IMG_0001.JPG: CAUSE".
QString faultLine(const VerifiedFault &fault)
{
    const QString cause = fault.cause.isEmpty() ? QString() : QStringLiteral(": ") + fault.cause;
    return QStringLiteral("%1  %2%3")
        .arg(QString::fromLatin1(wordFor(fault.state)).leftJustified(7),
             QString::fromUtf8(printable(fault.path)), cause);
}

// "412 good, 1 changed, 0 missing, 2 extra".
QString summaryLine(const VerifiedExport &result)
{
    QStringList counts;
    for (const VerifiedState state : verifiedStates)
        counts.append(QStringLiteral("%1 %2")
                          .arg(result.count(state))
                          .arg(QString::fromLatin1(wordFor(state))));
    return counts.join(QStringLiteral(", "));
}

void writeAsText(const VerifiedExport &result, bool withSummary, Output &output)
{
    for (const VerifiedFault &fault : result.faults)
        output.writeLine(faultLine(fault));
    if (withSummary)
        output.writeLine(summaryLine(result));
}

void writeFault(const VerifiedFault &fault, JsonWriter &json)
{
    json.startObject();
    json.key("path");
    json.text(fault.path);
    json.key("state");
    json.word(wordFor(fault.state));
    json.key("cause");
    json.text(fault.cause.isEmpty() ? QByteArray() : fault.cause.toUtf8());
    json.endObject();
}

void writeAsJson(const VerifiedExport &result, Output &output)
{
    output.write("{");
    for (const VerifiedState state : verifiedStates)
        output.write('"' + QByteArray(wordFor(state)) +
                     "\": " + QByteArray::number(result.count(state)) + ", ");
    output.write("\"files\": [");
    JsonWriter json;
    for (const VerifiedFault &fault : result.faults) {
        output.write(&fault == &result.faults.front() ? "\n" : ",\n");
        writeFault(fault, json);
        output.write(json.taken());
    }
    output.write(result.faults.empty() ? "]}\n" : "\n]}\n");
}

VerifiedExport verified(const VerifyArguments &arguments)
{
    VerifiedExport result;
    ReportedWork work(showsProgress());
    VerifyReport report(work);
    work.run([&](const CancelToken &cancel) {
        result = verifyExport(QByteArray::fromStdString(arguments.folder), report, cancel);
    });
    return result;
}

// A reader that keeps the output waiting is left when a signal comes.
void writeResult(const VerifiedExport &result, const VerifyArguments &arguments, bool isQuiet)
{
    CancelToken cancel;
    const auto write = [&] {
        Output output;
        output.whileWaiting([&cancel] {
            if (cancel.isCancelled())
                throw Error(Error::Cancelled, "interrupted");
        });
        if (arguments.isJson)
            writeAsJson(result, output);
        else
            writeAsText(result, !isQuiet, output);
        output.flush();
    };
    runInterruptible(
        write, [&cancel] { cancel.cancel(); }, [] {});
}

int runVerify(const VerifyArguments &arguments, const CommonOptions &common)
{
    const VerifiedExport result = verified(arguments);
    try {
        writeResult(result, arguments, common.quiet);
    } catch (const ReaderGone &) {
        // It has seen enough; the exit code tells the rest.
    }
    return result.faults.empty() ? exitDone : exitFailed;
}

} // namespace

void addVerifyCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *const command =
        app.add_subcommand("verify", "Check that exported files are still as they were exported");
    const auto arguments = std::make_shared<VerifyArguments>();
    command->add_option("DIR", arguments->folder, "The folder that was exported to")
        ->required()
        ->type_name("")
        ->check([](const std::string &name) { return name.empty() ? "the name is empty" : ""; });
    command->add_flag("--json", arguments->isJson, "Print JSON, with each file that is not good");
    command->footer(
        "Each file is compared, by its size and SHA-256, with the record that export keeps in "
        "DIR/.photolib, and each link in the folders of albums by what it leads to. No device is "
        "needed, and nothing is changed. What is not good is listed:\n"
        "  changed  another content or size, or cannot be read\n"
        "  missing  in the record, and not in the folder\n"
        "  extra    in the folder, and not in the record: export has not put it there\n"
        "\n"
        "The exit code is 0 when all files are good, and 1 when any file is not. With -q, nothing "
        "is printed when all are good.\n"
        "\n"
        "Examples:\n"
        "  photolib verify ~/Pictures/phone\n"
        "  photolib verify ~/Pictures/phone --json | jq '.files[].path'");
    command->callback([arguments, &context] {
        context.run = [arguments, &context] { return runVerify(*arguments, context.options); };
    });
}
