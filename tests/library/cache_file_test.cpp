#include "cache_fixture.hpp"

#include <algorithm>
#include <cstring>

#include "ovsel/cache/handreader.hpp"
#include "ovsel/cache/xmlreader.hpp"
#include "ovsel/reading/vfsmode.hpp"
#include "support/map_receiver.hpp"

using namespace Quorrant::ovsel;
namespace vfs = foundation::storage::vfs;

namespace {

const std::string header = "<Quorrant type=\"Path Cache File\" version=\"1.2\" date=\"";
std::string Repeat(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

const std::string footer = "</Quorrant>\n";

const std::string small = "<Quorrant>\n <D name=\"a\">\n  <D name=\"a/+p\">\n  </D>\n  <C name=\"x.sv\"/>\n"
                          "  <d name=\"s\"/>\n </D>\n</Quorrant>\n";

/// "D a { F x, D b { } }" for what the hand reader made of a file; "-" if it refused.
std::string TreeText(const CacheDirNode& node) {
    std::string text = N(node.m_name) + "{";
    const char* name = node.m_names;
    for (std::size_t i = 0; i < node.m_lettersCount; name += std::strlen(name) + 1, ++i)
        text += (i > 0 ? " " : "") + std::string(1, node.m_letters[i]) + ":" + name;
    for (const CacheDirNode* child = node.m_firstChild.get(); child; child = child->m_nextSibling.get())
        text += " " + TreeText(*child);
    return text + "}";
}

std::string MapText(const CachedDirMap& map) {
    std::vector<std::string> directories;
    for (const auto& [name, contents] : map) {
        std::string text = N(name);
        for (const auto* names : {&contents.subdirs, &contents.files, &contents.classFiles,
                                  &contents.noClassFiles, &contents.unconfirmed}) {
            std::vector<std::string> words;
            std::transform(names->begin(), names->end(), std::back_inserter(words), &N);
            text += "[" + Join(words, " ") + "]";
        }
        directories.push_back(text);
    }
    std::sort(directories.begin(), directories.end());
    return Join(directories, " ");
}

class CacheFile : public Cache {
  protected:
    /// What the hand reader makes of a text.
    std::string ByHand(const std::string& text) {
        folder.Write("cache.xml", text);
        const HandReading reading = ReadCacheFileByHand(FileName().c_str());
        return reading.root ? TreeText(*reading.root) : "-";
    }
    /// What the XML reader makes of it: its map, or the message, whose arguments it keeps.
    std::string ByXml(const std::string& text) {
        folder.Write("cache.xml", text);
        return ReadXml();
    }
    std::string ReadXml() {
        CachedDirMap map;
        path->SetDirItemsIteratorFactory(std::make_unique<MapReceiver>(map));
        const vfs::AbsoluteIRI file = vfs::toAbsoluteIRI(u"file", U(FileName()));
        try {
            EXPECT_TRUE(ReadCacheFileXML(path, file, vfs::toAbsoluteIRI(u"file", u"C:\\T")));
            return MapText(map);
        } catch (const fl::i18n::MessageException& failure) {
            lastArguments = failure.arguments();
            return failure.identifier();
        }
    }

    std::vector<ustring> lastArguments;
};

} // namespace

TEST_F(CacheFile, IsWrittenByteForByteAndGivesBackWhatIsInIt) {
    platform.now = 1794626472; // Sat Nov 14 03:21:12 2026
    disk.Put("C:", "T/ { sig/ { core/ { +util/ { Helper.sv:C +deep/ } @Filter/ { Filter.sv notes.txt } "
                   "private/ { step.p:N data/ } data/ run.sv readme.bin? step.svx:C two.p:C three.p:N } } "
                   "open/ } other/ { x.sv }");
    const std::string date = "Sat Nov 14 03:21:12 2026\">\n";
    const auto write = [&](const ovPath& from) {
        EXPECT_TRUE(ovWritePathToCacheFile(from, FileName().c_str()));
        return folder.Read("cache.xml");
    };
    EXPECT_EQ(header + date + footer, write(path)) << "nothing is frozen";

    const ovPath toolbox = PrefixedPath("toolbox", {"C:\\T\\sig\\core", "C:\\other", "C:\\T\\open"});
    ovUnFreeze(ovFindDirFullName(toolbox, u"C:\\T\\open"));
    // The storage layer is sure of every file and knows of no classes, save that private files are none.
    EXPECT_EQ(Told(IsVFSMode() ? "toolbox_of_storage.xml" : "toolbox.xml"), write(toolbox));
    ovRemovePath(toolbox);

    // What it says is what a path has from it, without a look at the disk.
    const std::string text = folder.Read("cache.xml");
    const auto kept = std::exchange(disk.dirs, {{"C:\\cwd", {}}});
    disk.accessibility["C:\\T\\sig\\core"] = ovDirAccessible; // the storage layer's mode asks this hook too
    const ovPath fromCache = PrefixedPath("from the cache", {});
    disk.listings = 0;
    ovUseToolboxCache(fromCache, U(FileName()), u"C:\\T", false);
    ovAddDir(fromCache, "C:\\T\\sig\\core", ovDirAddAtEnd);
    EXPECT_EQ(text, write(fromCache));
    EXPECT_EQ(0, disk.listings);
    ovRevertFromToolboxCache(fromCache);
    disk.dirs = kept;

    ovFreeze(Add("C:\\other"));
    ovFreeze(Add("C:\\T\\open"));
    EXPECT_EQ(header + date +
                  " <D name=\"C:/other\">\n  <F name=\"x.sv\"/>\n </D>\n"
                  " <D name=\"C:/T/open\">\n </D>\n" +
                  footer,
              write(path))
        << "no prefix: full names";
    const ovPath empty = NewPath("an empty prefix is a separator", ovCaseSensitive, u"");
    ovFreeze(ovAddDir(empty, u"C:\\other", ovDirAddAtEnd));
    EXPECT_EQ(header + date + footer, write(empty));

    disk.Put("C:\\T\\odd", "\xED\xB2\x80x.sv");
    EXPECT_THROW(write(PrefixedPath("odd", {"C:\\T\\odd"})), fl::i18n::CvtInvalidCharacter);
    EXPECT_THROW(ovWritePathToCacheFile(path, ("C:" + folder.Path("missing/cache.xml")).c_str()),
                 vfs::Exception);
}

TEST_F(CacheFile, IsReadByHandAsFarAsItsShapesGo) {
    const std::string root = "<Quorrant whatever>";
    const std::string longest(1280, 'n');
    const auto nested = [](int depth) {
        return "<Q>" + Repeat("<D name=\"d\">", depth) + Repeat("</D>", depth) + "</Q>";
    };
    const std::pair<std::string, std::string> rows[] = {
        {small, "CachePath{D:a a{D:+p C:x.sv d:s a\\+p{}}}"},
        {root + "</", "CachePath{}"},
        {"", "-"},
        {root + "<F name=\"x\"/></Quorrant>", "CachePath{F:x}"},
        {root + "<F name=\"x\" /></Quorrant>", "-"},
        {root + "<F x=\"\" name=\"y\"/></", "-"},
        {root + "<Fill color=\"x\"/></", "CachePath{F:x}"},
        {root + "<X name=\"x\"/></", "-"},
        {root + "<!-- no --></", "-"},
        {root + "text <U name=\"a/b\"/> text </", "CachePath{U:a\\b}"},
        {root + "<D name=\"a/b\"></D></", "CachePath{D:b a\\b{}}"},
        {root + "<D name=\"a\"></d></", "-"},
        {root + "<D name=\"a\"></D><D name=\"a\"><d name=\"s\"/></D></", "CachePath{D:a D:a a{} a{d:s}}"},
        {root + "<F name=\"" + longest + "\"/></", "CachePath{F:" + longest + "}"},
        {root + "<F name=\"" + longest + "n\"/></", "-"},
        {root + "<F name=\"" + std::string(700, 'n') + "\n" + std::string(580, 'n') + "\"/></", "-"},
        {root + "<F name=\"abcdefgh/ij/klm\"/></", "CachePath{F:abcdefgh\\ij\\klm}"},
        // A directory beyond ASCII is not entered: its entries and its end are its parent's.
        {root + "<D name=\"a\"><D name=\"\xC3\xA4\"><F name=\"x\"/></D><F name=\"lost\"/></D></",
         "CachePath{D:a F:lost a{F:x}}"},
        {root + "<F name=\"\xC3\xA4\"/></", "CachePath{F:\xC3\xA4}"},
        {root + std::string("<F name=\"x\0\n", 12) + "y\"/></", "CachePath{F:xy}"}, // NUL hides a line's rest
        {nested(2049), "-"},
        {std::string(1, '\0') + "\n" + root + std::string(9000, ' ') + "<F name=\"x\"/></", "CachePath{F:x}"},
    };
    for (const auto& [text, tree] : rows)
        EXPECT_EQ(tree, ByHand(text)) << text.substr(0, 200);
    EXPECT_NE("-", ByHand(nested(2048)));
    // Behind the slash of the root's end nothing is looked at.
    for (std::size_t length = 0; length <= small.rfind('/'); ++length)
        EXPECT_EQ("-", ByHand(small.substr(0, length))) << length;
}

TEST_F(CacheFile, IsReadAsXmlForWhatItsElementsSay) {
    const std::string parseError = "SORVEN:ovsel:pathCacheXMLParseError";
    const std::string unable = "SORVEN:ovsel:unableToLoadCache";
    const std::pair<std::string, std::string> rows[] = {
        {small, "a/+p[][][][][] a[a/+p s][][x.sv][][]"},
        {"<Quorrant><Dxyz name=\"a\"><Fine name=\"f\"/></Dxyz><F name=\"g\"/></Quorrant>", "a[][f g][][][]"},
        {"<Quorrant><D name=\"a&amp;\xC3\xA4\"><U name=\"u\"/><N name=\"n\"/></D></Quorrant>",
         "a&\xC3\xA4[][][][n][u]"},
        {"<D name=\"a\"><Quorrant version=\"9\"/></D>", "a[][][][][]"},
        {"\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Quorrant><!-- c --></Quorrant>", ""},
        {"<Quorrant><F name=\"x\"/></Quorrant>", parseError},
        {"<Quorrant><D name=\"a\"/><D name=\"a\"/></Quorrant>", parseError},
        {"<Quorrant><D name=\"a\"><X name=\"x\"/></D></Quorrant>", parseError},
        {"<Quorrant><D/></Quorrant>", parseError},
        {"<Quorrant><D name=\"a<b\"/></Quorrant>", parseError},
        {"<Quorrant>", parseError},
        {"", parseError},
        {"<Quorrant><D name=\"\xE4\"/></Quorrant>", unable}, // no UTF-8
        {std::string("\xFF\xFE<\0Q\0", 6), unable},
        {"<!DOCTYPE Quorrant SYSTEM \"http://127.0.0.1/x.dtd\"><Quorrant/>", parseError},
        {Repeat("<D name=\"a\">", 100000), parseError},
        {"<Quorrant>" + Repeat("<Quorrant>", 1000000), parseError},
    };
    for (const auto& [text, map] : rows) {
        EXPECT_EQ(map, ByXml(text)) << text.substr(0, 200);
        if (map == unable)
            EXPECT_EQ(2u, lastArguments.size()) << "the file and the reason";
    }
    // As deep as by hand, and no deeper by what a name says.
    for (const int depth : {2048, 2049}) {
        std::string text, name;
        for (int i = 0; i < depth; ++i)
            text += "<D name=\"" + std::to_string(i) + "\">";
        text += "<F name=\"x\"/>" + Repeat("</D>", depth);
        EXPECT_EQ(depth > 2048, ByXml("<Quorrant>" + text + "</Quorrant>") == parseError);
        EXPECT_EQ(depth > 2048, ByXml("<D name=\"a" + Repeat("/+p", depth - 1) + "\"/>") == parseError);
    }
    ByXml("<Quorrant><F name=\"x\"/></Quorrant>");
    ASSERT_EQ(1u, lastArguments.size());
    EXPECT_EQ(
        fl::i18n::message_text({"SORVEN:ovsel", "cacheFileWrongFormat", {}}, fl::i18n::Locale::global()),
        lastArguments[0]);
    folder.Remove("cache.xml");
    EXPECT_EQ(unable, ReadXml());
    EXPECT_EQ(fl::filesystem::make_native_form(U(FileName()), true), lastArguments[0]);
    EXPECT_FALSE(ReadCacheFileByHand(FileName().c_str()).opened);
    folder.Add({"cache.xml/"});
    EXPECT_EQ(unable, ReadXml());
}
