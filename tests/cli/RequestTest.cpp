#include "cli/Request.h"
#include "cli/ExitStatus.h"
#include "cli/Files.h"
#include "cli/KindFacts.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kelvo::cli {
namespace {

TEST(Request, PagesAndPDFsHaveMoreTime) {
    const double usual = defaultTimeout(Operation::metaDataForFile, FileKind::plainText);
    const std::tuple<Operation, FileKind, bool> rows[] = {
        {Operation::attributedStringWithContentsOfFile, FileKind::officeOpenXML, false},
        {Operation::attributedStringWithContentsOfFile, FileKind::HTML, true},
        {Operation::attributedStringWithContentsOfFile, FileKind::MIMEHTML, true},
        {Operation::imageWithContentsOfFile, FileKind::PDF, true},
        {Operation::imageWithContentsOfFile, FileKind::image, false},
        {Operation::RTFDWithHTML, FileKind::plainText, true},
        {Operation::stringWithPDF, FileKind::other, true},
    };
    for (const auto& [operation, kind, isSlow] : rows)
        EXPECT_EQ(defaultTimeout(operation, kind) > usual, isSlow)
            << subcommandOfOperation(operation) << " " << nameOfKind(kind);
}

TEST(PackageOutput, TakesThePlaceOfPackagesAndEmptyFoldersOnly) {
    const tests::TemporaryFolder folder;
    folder.write("full/a.txt", "");
    std::filesystem::create_directory(folder.path("empty"));
    PackageOutput{folder.path("empty") + "/"};
    EXPECT_THROW(PackageOutput{folder.path("full")}, CommandError);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2) << "nothing is left";
}

TEST(Files, TheRootIsAFolderLikeOthers) {
    try {
        requireWritable("/no file has this name");
    } catch (const CommandError& error) {
        // Others than the superuser may not write there.
        EXPECT_EQ(std::string(error.what()).find("is not there"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace kelvo::cli
