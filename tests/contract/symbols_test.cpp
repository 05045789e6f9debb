// The built library as the loader sees it: symbols, dependencies, run path.

#include <elf.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/catalogue.h"

namespace {

class BuiltLibrary : public testing::Test {
  protected:
    void SetUp() override {
        std::ifstream input(BIFUN_LIBRARY, std::ios::binary);
        file.assign(std::istreambuf_iterator<char>(input), {});
        ASSERT_GT(file.size(), sizeof(Elf64_Ehdr));
        std::memcpy(&header, file.data(), sizeof header);
        sections.resize(header.e_shnum);
        std::memcpy(sections.data(), file.data() + header.e_shoff, sections.size() * sizeof(Elf64_Shdr));
    }

    // The records of the one section of a type, and the texts that they name.
    template <class Record> std::vector<Record> records(std::uint32_t section_type) {
        for (const Elf64_Shdr& section : sections) {
            if (section.sh_type == section_type) {
                std::vector<Record> found(section.sh_size / sizeof(Record));
                std::memcpy(found.data(), file.data() + section.sh_offset, found.size() * sizeof(Record));
                texts = file.data() + sections[section.sh_link].sh_offset;
                return found;
            }
        }
        return {};
    }

    std::set<std::string> dynamic_texts(Elf64_Sxword tag) {
        std::set<std::string> found;
        for (const Elf64_Dyn& entry : records<Elf64_Dyn>(SHT_DYNAMIC)) {
            if (entry.d_tag == tag) {
                found.insert(texts + entry.d_un.d_val);
            }
        }
        return found;
    }

    std::vector<char> file;
    Elf64_Ehdr header{};
    std::vector<Elf64_Shdr> sections;
    const char* texts = nullptr;
};

TEST_F(BuiltLibrary, ExportsTheCatalogueAndNothingElse) {
    std::set<std::string> expected(std::begin(bifun::other_symbols), std::end(bifun::other_symbols));
    for (const bifun::entry_point& entry : bifun::entry_points) {
        expected.insert(entry.symbol);
    }
    std::set<std::string> exported;
    for (const Elf64_Sym& symbol : records<Elf64_Sym>(SHT_DYNSYM)) {
        if (symbol.st_shndx != SHN_UNDEF && ELF64_ST_BIND(symbol.st_info) != STB_LOCAL) {
            exported.insert(texts + symbol.st_name);
        }
    }
    EXPECT_EQ(exported, expected);
}

// The loader finds an operation by its name alone: one that no header declares is a misspelling, or an engine would not know of it.
TEST_F(BuiltLibrary, AsksTheEngineForWhatItsHeadersDeclare) {
#ifdef BIFUN_SANITIZED
    GTEST_SKIP() << "a sanitizer's functions of the C library have no versions";
#endif
    std::string headers;
    for (const auto& file : std::filesystem::directory_iterator(BIFUN_ENGINE_HEADERS)) {
        std::ifstream input(file.path());
        headers.append(std::istreambuf_iterator<char>(input), {});
    }
    const std::vector<Elf64_Versym> versions = records<Elf64_Versym>(SHT_GNU_versym);
    const std::vector<Elf64_Sym> symbols = records<Elf64_Sym>(SHT_DYNSYM);
    ASSERT_EQ(versions.size(), symbols.size());
    std::size_t operations = 0;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        const std::string name = texts + symbols[i].st_name;
        // What the platform supplies has a version, or is the compiler's.
        if (symbols[i].st_shndx != SHN_UNDEF || versions[i] > VER_NDX_GLOBAL || name.empty() || name[0] == '_') {
            continue;
        }
        ++operations;
        EXPECT_TRUE(headers.find(' ' + name + '(') != std::string::npos || headers.find(' ' + name + " __attribute__") != std::string::npos)
            << name;
    }
    EXPECT_GT(operations, 0U);
}

TEST_F(BuiltLibrary, HasTheSettingsAsAWritableRecord) {
    std::size_t found = 0;
    for (const Elf64_Sym& symbol : records<Elf64_Sym>(SHT_DYNSYM)) {
        if (std::strcmp(texts + symbol.st_name, "global_bifun_var") == 0) {
            ++found;
            EXPECT_EQ(symbol.st_size, 12U);
            EXPECT_EQ(ELF64_ST_TYPE(symbol.st_info), STT_OBJECT);
            EXPECT_EQ(ELF64_ST_VISIBILITY(symbol.st_other), STV_DEFAULT);
            EXPECT_NE(sections.at(symbol.st_shndx).sh_flags & SHF_WRITE, 0U);
        }
    }
    EXPECT_EQ(found, 1U);
}

TEST_F(BuiltLibrary, IsFoundBesideTheEngineAndNeedsNoneOfItsLibraries) {
    const std::set<std::string> allowed = {"libstdc++.so.6", "libm.so.6", "libgcc_s.so.1", "libc.so.6"};
    for (const std::string& name : dynamic_texts(DT_NEEDED)) {
#ifdef BIFUN_SANITIZED
        if (name.find("san.so") != std::string::npos) {
            continue;
        }
#endif
        EXPECT_TRUE(allowed.contains(name)) << name;
    }
    EXPECT_EQ(dynamic_texts(DT_SONAME), std::set<std::string>{"libbifun.so.0"});
    std::set<std::string> run_paths = dynamic_texts(DT_RUNPATH);
    run_paths.merge(dynamic_texts(DT_RPATH));
    EXPECT_EQ(run_paths, std::set<std::string>{"./:../release"});
}

} // namespace
