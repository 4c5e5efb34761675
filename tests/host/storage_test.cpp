// The storage layer on the disk: folders, locations, and streams whose failures can be seen.

#include <csignal>
#include <sys/resource.h>

#include "host_test.hpp"

namespace {

using namespace test;

vfs::AbsoluteIRI Location(const ustring& name) { return vfs::toAbsoluteIRI(u"file", name); }

/// So many, of every value and without a short period.
std::string Bytes(std::size_t count) {
    std::string bytes(count, ' ');
    std::generate(bytes.begin(), bytes.end(),
                  [n = 0U]() mutable { return static_cast<char>(++n * 2654435761U >> 24); });
    return bytes;
}

/// Tests leave no descriptor open and no root mapped.
class Storage : public testing::Test {
  protected:
    ~Storage() override {
        DriveMap::Reset();
        EXPECT_EQ(Descriptors(), m_descriptors);
    }

    vfs::File File(const ustring& name) const { return {Location(name), m_system}; }
    vfs::Folder Folder(const ustring& name) const { return {Location(name), m_system}; }

    /// What @p question says, or "refused" if the storage layer does, in a text that names the location.
    static std::string Answer(const ustring& name, const std::function<std::string()>& question) {
        try {
            return question();
        } catch (const vfs::Exception& exception) {
            const std::string display = Narrow(Location(name).toString().substr(0, 10));
            EXPECT_EQ(std::string_view(exception.what()).substr(0, display.size()), display);
            return "refused";
        }
    }

    std::string Read(const ustring& name) const {
        return Answer(name, [&] {
            vfs::ifstream stream(File(name));
            return std::string(std::istreambuf_iterator<char>(stream), {});
        });
    }
    std::string Write(const ustring& name, const std::string& text) const {
        return Answer(name, [&] { return vfs::ofstream(File(name)) << text ? "written" : "bad"; });
    }
    std::string Canonical(const ustring& name) const {
        return Answer(name, [&] { return Narrow(Folder(name).getCanonicalLocation().toString()); });
    }

    vfs::StorageSystemReference m_system{vfs::createStorageSystem({}, nullptr)};

  private:
    std::ptrdiff_t m_descriptors = Descriptors();
};

TEST_F(Storage, CarriesBytesOfEverySizeThereAndBackOverWhatWasThere) {
    TempTree tree;
    tree.Write("file", std::string(300000, 'o'));
    const ustring name = NameOf(tree, "file");
    for (const std::size_t size : {0U, 65535U, 131072U, 200001U}) {
        const std::string bytes = Bytes(size);
        vfs::ofstream(File(name)).put('x').write(bytes.data(), static_cast<std::streamsize>(size)).put('z');
        EXPECT_TRUE(Read(name) == "x" + bytes + "z") << size;
    }
    EXPECT_EQ(Write(NameOf(tree, "bad\xFF"), "new"), "written");
    EXPECT_EQ(std::filesystem::file_size(tree.Path("bad\xFF")), 3U);
}

TEST_F(Storage, OpensNothingButRegularFilesAndNeverWaits) {
    TempTree tree{"file", "sub/", "ldir -> sub", "lpipe -> pipe", "round -> round"};
    ASSERT_EQ(::mkfifo(tree.Path("pipe").c_str(), 0600), 0);
    const int reader = ::open(tree.Path("pipe").c_str(), O_RDONLY | O_NONBLOCK); // a writer may now open it
    std::vector<ustring> names = {u"C:\\dev\\null", u"C:\\dev\\tty", u"Q:\\x", u"\\\\server"};
    for (const char* path : {"", "sub", "ldir", "pipe", "lpipe", "round", "none/x"})
        names.push_back(NameOf(tree, path));
    for (const ustring& wrong : {ustring(u"\\file\0x", 7), ustring{u'\\', 0xD800}, ustring(300, u'a')})
        names.push_back(NameOf(tree) + wrong);
    for (const ustring& name : names)
        EXPECT_EQ(Read(name) + " " + Write(name, "x"), "refused refused") << testing::PrintToString(name);
    ::close(reader);
    EXPECT_FALSE(std::filesystem::exists(tree.Path("none")));
    EXPECT_THROW(vfs::ifstream(vfs::File(Location(NameOf(tree, "file")), {})), vfs::Exception) << "no system";

    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.Root());
    tree.Write("sub/bad\xFF", "text");
    for (const std::string& name : {std::string(".\\sub\\bad\xFF"), "C:" + tree.Path("ldir/bad\xFF")}) {
        std::FILE* file = fl::filesystem::open_for_reading(name.c_str());
        ASSERT_NE(file, nullptr) << name;
        EXPECT_EQ(std::fgetc(file), 't');
        EXPECT_EQ(::fcntl(::fileno(file), F_GETFD), FD_CLOEXEC);
        std::fclose(file);
    }
    for (const char* name :
         {"pipe", "lpipe", "sub", "C:\\dev\\null", "none", "Q:\\x", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(fl::filesystem::open_for_reading(name), nullptr);
    std::filesystem::current_path(before);
}

/// Lets files grow up to @p size bytes; a write beyond fails.
bool LimitFileSize(::rlim_t size) {
    const ::rlimit limit{size, RLIM_INFINITY};
    return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
}

TEST_F(Storage, TellsWhyAStreamFailsAndLosesNoByteOfIt) {
    // A regular file by its mode, whose first page nobody can read.
    vfs::ifstream unreadable(File(u"C:\\proc\\self\\mem"));
    EXPECT_TRUE(unreadable.get() == EOF && unreadable.bad());
    unreadable.clear();
    unreadable.exceptions(std::ios::badbit);
    EXPECT_THROW(unreadable.get(), vfs::Exception);

    TempTree tree;
    const ustring name = NameOf(tree, "file");
    const std::string begin = Bytes(70000), end = Bytes(60000);
    InChild([] { return LimitFileSize(100000); },
            [&] {
                vfs::ofstream(File(name)) << begin << end; // the destructor fails in silence
                EXPECT_EQ(std::filesystem::file_size(tree.Path("file")), 100000U);
                vfs::ofstream stream(File(name));
                EXPECT_TRUE((stream << begin).flush() && stream << end && !stream.flush());
                stream.clear();
                stream.exceptions(std::ios::badbit);
                EXPECT_THROW(stream << end, vfs::Exception); // more than the buffer has room for
                stream.clear();
                EXPECT_TRUE(LimitFileSize(RLIM_INFINITY) && stream.flush());
            });
    const std::string written = Read(name);
    EXPECT_EQ(written.substr(0, 130000), begin + end) << "what failed is tried again, and leaves no gap";
}

TEST_F(Storage, FindsTheOneLocationBehindLinksDotsAndRoots) {
    TempTree tree{"real/sub/file", "link -> real", "x:y/", "lost -> none", "colon -> x:y"};
    const std::string root = Narrow(Location(NameOf(tree)).toString());
    EXPECT_EQ(Canonical(NameOf(tree, "link/sub/../sub/file")), root + "/real/sub/file");
    EXPECT_EQ(Canonical(NameOf(tree, "link") + u"\\..\\link\\."), root + "/real");
    DriveMap::Add(u"L:", tree.Path("link"), DriveMap::Kind::Fixed);
    EXPECT_EQ(Canonical(u"L:\\sub"), root + "/real/sub") << "a root that is a link";
    DriveMap::Add(u"\\\\s\\h", tree.Path("real"), DriveMap::Kind::Fixed);
    EXPECT_EQ(Canonical(u"L:\\sub\\file"), "file:////s/h/sub/file");
    EXPECT_EQ(Canonical(u"L:\\"), "file:////s/h");
    EXPECT_EQ(vfs::Folder({u"x", u"C:/"}, m_system).getCanonicalLocation().toString(), u"x://C:/");
    for (const ustring& name : {NameOf(tree, "lost"), NameOf(tree, "colon"), NameOf(tree, "gone"),
                                NameOf(tree) + ustring(u"\\real\0", 6), ustring(u"Q:\\")}) {
        EXPECT_EQ(Canonical(name), "refused") << testing::PrintToString(name);
        EXPECT_EQ(Folder(name).folderExists(), name == NameOf(tree, "colon"));
    }
    EXPECT_EQ(Answer(u"C:\\gone", [&] { return Folder(u"C:\\gone").listAll(), ""; }), "refused");
}

} // namespace
