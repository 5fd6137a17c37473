#include "support/proven_export.h"
#include "support/row_name.h"

namespace {

struct OperationRow {
    const char *name;
    WatchedFiles::Operation operation;
};

void PrintTo(const OperationRow &row, std::ostream *stream)
{
    *stream << row.name;
}

// Exports from a device with a fault at each operation of one kind.
class ExportFromAFaultyDevice : public ProvenExports,
                                public testing::WithParamInterface<OperationRow>
{
protected:
    ExportFromAFaultyDevice()
    {
        open();
        findExpected();
        m_operations = m_files->count(GetParam().operation);
    }

    /// Calls `check` with the outcome of an export for each fault.
    void forEachFault(const FileError &fault, const std::function<void(const std::string &)> &check)
    {
        ASSERT_GE(m_operations, 4);
        for (int n = 1; n <= m_operations && !HasFailure(); ++n) {
            SCOPED_TRACE(n);
            resetOut();
            open();
            m_files->failAt(GetParam().operation, n, fault);
            check(exportTo(out()));
            expectNothingHalf();
            open();
            expectWholeAfterRerun();
        }
    }

    int m_operations = 0;
};

TEST_P(ExportFromAFaultyDevice, EndsWhenTheDeviceIsGoneAndGoesOnInTheNextRun)
{
    forEachFault({FileError::Disconnected, QStringLiteral("No such device")},
                 [](const std::string &end) {
                     EXPECT_NE(std::string::npos, end.find("No such device")) << end;
                 });
}

TEST_P(ExportFromAFaultyDevice, TellsWhatCannotBeReadAndCopiesItInTheNextRun)
{
    forEachFault({FileError::Failed, QStringLiteral("Input/output error")},
                 [this](const std::string &end) {
                     EXPECT_EQ("", end);
                     EXPECT_GE(m_result.counts.failed, 1);
                 });
}

// Some disks that are pulled out say of each file that it cannot be read.
class ExportFromAPulledDisk : public ProvenExports
{
};

TEST_F(ExportFromAPulledDisk, EndsAndGoesOnInTheNextRun)
{
    open();
    findExpected();
    resetOut();
    open();
    m_files->failFrom(WatchedFiles::Read, 1,
                      {FileError::Failed, QStringLiteral("Input/output error")});
    const std::string end = exportTo(out());
    EXPECT_EQ(0U, end.find("the device: Input/output error; copied ")) << end;
    EXPECT_EQ(0, m_result.counts.failed);
    open();
    expectWholeAfterRerun();
}

INSTANTIATE_TEST_SUITE_P(AtEach, ExportFromAFaultyDevice,
                         testing::Values(OperationRow{"Read", WatchedFiles::Read},
                                         OperationRow{"Info", WatchedFiles::Info},
                                         OperationRow{"Open", WatchedFiles::Open},
                                         OperationRow{"List", WatchedFiles::List}),
                         rowName<OperationRow>);

} // namespace
