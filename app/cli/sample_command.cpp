#include "base/cancel_token.h"
#include "base/error.h"
#include "base/printable.h"
#include "cli/command.h"
#include "cli/interruptible_run.h"
#include "cli/output.h"
#include "cli/progress_bar.h"
#include "engine/sample_device.h"

#include <QThreadPool>

#include <CLI/CLI.hpp>

#include <atomic>
#include <map>
#include <memory>

namespace {

struct SampleArguments {
    std::string folder; ///< the bytes of the command line
    int assets = SampleOptions().assets;
    quint32 seed = SampleOptions().seed;
    bool classic = false;
    std::string schema = "13";
    int keywords = SampleOptions().keywords;
    int people = SampleOptions().people;
    bool noPictures = false;
};

const std::map<std::string, SampleSchema> &sampleSchemas()
{
    static const std::map<std::string, SampleSchema> schemas = {
        {"early", SampleSchema::Early}, {"13", SampleSchema::V13}, {"14", SampleSchema::V14},
        {"16", SampleSchema::V16},      {"18", SampleSchema::V18}, {"26", SampleSchema::V26}};
    return schemas;
}

SampleOptions optionsFrom(const SampleArguments &arguments)
{
    SampleOptions options;
    options.assets = arguments.assets;
    options.seed = arguments.seed;
    options.schema = sampleSchemas().at(arguments.schema);
    options.keywords = arguments.keywords;
    options.people = arguments.people;
    options.pictures = !arguments.noPictures;
    return options;
}

ClassicSampleOptions classicOptionsFrom(const SampleArguments &arguments)
{
    ClassicSampleOptions options;
    options.photos = arguments.assets;
    options.seed = arguments.seed;
    options.pictures = !arguments.noPictures;
    return options;
}

void write(const SampleArguments &arguments)
{
    // Painting uses Qt's pool of threads, which must not belong to one that ends before it.
    QThreadPool::globalInstance();
    CancelToken cancel;
    std::atomic<int> written{0};
    const SampleWatch watch = {cancel.flag(), &written};
    const auto path = QByteArray::fromStdString(arguments.folder);
    const auto writeIt = [&] {
        if (arguments.classic)
            writeSampleIpod(path, classicOptionsFrom(arguments), watch);
        else
            writeSampleDevice(path, optionsFrom(arguments), watch);
    };
    ProgressBar bar(showsProgress(), QStringLiteral("Writing the sample"));
    const auto update = [&] {
        const int done = written;
        bar.show(done, arguments.assets,
                 QStringLiteral("%1 of %2").arg(done).arg(arguments.assets));
    };
    try {
        runInterruptible(
            writeIt, [&] { cancel.cancel(); }, update);
    } catch (const Error &) {
        if (cancel.isCancelled())
            throw Error(Error::Cancelled, "interrupted: no sample was written");
        throw;
    }
}

void report(const SampleArguments &arguments)
{
    const QByteArray things = arguments.classic ? " photo" : " asset";
    Output output;
    output.write(
        (arguments.classic ? "Wrote a sample classic iPod with " : "Wrote a sample device with ") +
        QByteArray::number(arguments.assets) + things + (arguments.assets == 1 ? " to " : "s to ") +
        printable(QByteArray::fromStdString(arguments.folder)) + '\n');
    output.flush();
}

int runSample(const SampleArguments &arguments, const CommonOptions &common)
{
    write(arguments);
    if (!common.quiet)
        report(arguments);
    return 0;
}

/// Adds the options of what a classic iPod does not have.
void addSampleOptions(CLI::App &command, SampleArguments &arguments, CLI::Option *classic)
{
    // "late" is what 13 was called before there were newer ones.
    const std::map<std::string, std::string> olderNames = {{"late", "13"}};
    command
        .add_option("--schema", arguments.schema,
                    "Generation of the database: that of iOS 13, 14, 16, 18 or 26, or an early one "
                    "without keywords and people")
        ->transform(CLI::Transformer(olderNames).description(""))
        ->check(CLI::IsMember(sampleSchemas()))
        ->capture_default_str()
        ->excludes(classic);
    command.add_option("--keywords", arguments.keywords, "Number of keywords")
        ->check(CLI::Range(0, maxSampleNames))
        ->capture_default_str()
        ->excludes(classic);
    command.add_option("--people", arguments.people, "Number of people")
        ->check(CLI::Range(0, maxSampleNames))
        ->capture_default_str()
        ->excludes(classic);
}

void addArguments(CLI::App &command, SampleArguments &arguments)
{
    command.add_option("DIR", arguments.folder, "The folder to make; must be empty or not exist")
        ->required();
    command.add_option("--assets", arguments.assets, "Number of photos and videos")
        ->check(CLI::Range(0, maxSampleAssets))
        ->capture_default_str();
    command.add_option("--seed", arguments.seed, "Seed of the random content")
        ->capture_default_str();
    CLI::Option *const classic =
        command.add_flag("--classic", arguments.classic, "Write a classic iPod, with photos only");
    addSampleOptions(command, arguments, classic);
    command.add_flag("--no-pictures", arguments.noPictures,
                     "Write only the database, not the files that it names");
}

} // namespace

void addSampleCommand(CLI::App &app, CommandContext &context)
{
    CLI::App *command = app.add_subcommand(
        "sample", "Write a sample device; the same arguments give the same bytes");
    const auto arguments = std::make_shared<SampleArguments>();
    addArguments(*command, *arguments);
    command->footer("Examples:\n"
                    "  photolib sample phone\n"
                    "  photolib sample phone --assets 500 --seed 7 --schema 18\n"
                    "  photolib sample large --assets 100000 --keywords 10000 --no-pictures\n"
                    "  photolib sample ipod --classic");
    command->callback([arguments, &context] {
        context.run = [arguments, &context] { return runSample(*arguments, context.options); };
    });
}
