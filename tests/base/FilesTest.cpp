#include "base/Files.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "support/StoreFixture.h"

namespace {

FileDescriptor OpenToCompare(const wxString& path) {
    return FileDescriptor(::open(ToPath(path).c_str(), O_RDONLY | O_CLOEXEC));
}

struct FilesTest : ::testing::Test {
    TestDirectory mDirectory;
};

// Longer and shorter than the blocks in which files are read.
TEST_F(FilesTest, ACopyHasEveryByteAndAChangeOfAnyIsFound) {
    const wxString source = mDirectory.Path("source");
    for (const size_t size : {0U, 1U, 65535U, 65536U, 65537U, 200000U}) {
        std::string bytes(size, '\0');
        for (size_t i = 0; i < size; ++i) {
            bytes[i] = static_cast<char>(i * 7 + i / 256);
        }
        WriteBytes(source, bytes);
        const wxString copy = mDirectory.Path(wxString::Format("copy%zu", size));
        ASSERT_EQ(CopyToNewFile(ToPath(source), ToPath(copy)), 0) << size;
        EXPECT_EQ(ReadBytes(copy), bytes) << size;
        const auto compare = [&] {
            return CompareBytes(OpenToCompare(source).Get(), OpenToCompare(copy).Get());
        };
        EXPECT_EQ(compare(), 0) << size;
        WriteBytes(copy, bytes + "x");
        EXPECT_EQ(compare(), EIO) << size;
        if (size != 0) {
            WriteBytes(copy, bytes.substr(1) + 'x');
            EXPECT_EQ(compare(), EIO) << size;
            WriteBytes(copy, bytes.substr(0, size - 1));
            EXPECT_EQ(compare(), EIO) << size;
        }
    }
}

TEST_F(FilesTest, ACopyThatCannotBeMadeSaysWhyAndTouchesNoOtherFile) {
    const auto path = [this](const char* name) { return ToPath(mDirectory.Path(name)); };
    WriteBytes(mDirectory.Path("there"), "old");
    WriteBytes(mDirectory.Path("large"), std::string(100000, 'x'));
    EXPECT_EQ(CopyToNewFile(path("large"), path("there")), EEXIST);
    EXPECT_EQ(ReadBytes(mDirectory.Path("there")), "old");
    EXPECT_EQ(CopyToNewFile(path("missing"), path("new")), ENOENT);
    EXPECT_EQ(CopyToNewFile(path("large"), path("nowhere/new")), ENOENT);
    const FullDisk full(70000);
    EXPECT_EQ(CopyToNewFile(path("large"), path("cut")), EFBIG);
}

TEST(Files, APathIsUtf8InAnyLocale) {
    for (const char* const name : {"/tmp/plain", "/tmp/\xC3\xA9", "/tmp/\xE6\xBC\xA2",
                                   "/tmp/\xF0\x9F\x98\x80", "relative", ""}) {
        EXPECT_EQ(ToPath(wxString::FromUTF8(name)).native(), name);
        EXPECT_EQ(FromPath(name).utf8_string(), name);
    }
    EXPECT_EQ(FromPath("caf\xE9").utf8_string(), "caf\xEF\xBF\xBD");
}

// A number that the program uses in a sense of its own, or none, would name a reason that is not
// true: that of EILSEQ speaks of characters, and for 0 the library takes the last failure.
TEST(Files, AReasonIsTheOneOfTheFailure) {
    const auto text = [](int error) {
        errno = EACCES;
        return SystemErrorText(error).utf8_string();
    };
    EXPECT_EQ(text(ENOSPC), std::strerror(ENOSPC));
    EXPECT_EQ(text(EACCES), std::strerror(EACCES));
    for (const int error : {0, EILSEQ, EBUSY, ENOTSUP, EINVAL, ENODEV, EIO, ECANCELED}) {
        EXPECT_FALSE(text(error).empty());
        EXPECT_NE(text(error), std::strerror(error));
        EXPECT_NE(text(error), std::strerror(EACCES));
    }
}

TEST(Files, ATemporaryDirectoryIsPrivateAndGoesWithAllInIt) {
    wxString inside;
    {
        const TemporaryDirectory first;
        const TemporaryDirectory second;
        inside = first.Path("file");
        EXPECT_NE(inside, second.Path("file"));
        WriteBytes(inside, "content");
        std::filesystem::create_directories(ToPath(first.Path("deep/deeper")));
        const auto rights = std::filesystem::status(ToPath(inside).parent_path()).permissions();
        EXPECT_EQ(rights, std::filesystem::perms::owner_all);
        const TemporaryDirectory beside(ToPath(first.Path("stem")));
        EXPECT_TRUE(beside.Path("x").StartsWith(first.Path("stem-")));
        const TemporaryDirectory nowhere(ToPath(first.Path("missing/stem")));
        EXPECT_EQ(nowhere.GetError(), ENOENT);
    }
    EXPECT_FALSE(std::filesystem::exists(ToPath(inside).parent_path()));
}

}  // namespace
