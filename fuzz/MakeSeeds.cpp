// plotterra_fuzz_seeds <corpus folder>: writes the seeds that the fuzzers start from, so that they
// can be made anew when a format's reader grows.

#include "sample/SampleRegionRecord.h"
#include "tests/ArchiveBytes.h"
#include "tests/BlockFileBytes.h"

#include <cstdio>
#include <string>

namespace {

ZPData landBlock(std::uint32_t identifier) {
    ZPData record = words({identifier, 1});
    for (unsigned vertex = 0; vertex < 81; ++vertex)
        ZPAppendLittleInt16(record, static_cast<std::uint16_t>(vertex % 32 << 2));
    record.resize(252, std::byte{20});
    return record;
}

ZPData node(const ZPData &children, std::uint32_t count, const ZPData &entries, std::size_t size) {
    ZPData bytes = children;
    bytes.resize(248);
    bytes = joined({bytes, words({count}), entries});
    bytes.resize(size);
    return bytes;
}

/// Every kind of record, and a directory of two levels.
void writeWorld(const std::filesystem::path &path) {
    ArchiveBytes archive;
    archive.addFile(0xFFFF0001, words({1394}));
    const ZPData region = SampleRegionRecord();
    archive.addFile(0x13000000, std::span(region).first(2000));
    archive.addFile(0x04000001, "palette");
    archive.addFile(0x8080FFFF, landBlock(0x8080FFFF));
    archive.addFile(0x8080FFFE, words({0x8080FFFE, 1, 2, 3}));
    archive.addFile(0x80800100, words({0x80800100, 4}));
    const std::uint32_t chain = archive.addChain(landBlock(0x8081FFFF));
    for (std::uint32_t block = 0x8081; block < 0x80C0; ++block)
        archive.addEntry(block << 16 | 0xFFFF, {chain, 252, 1'000'000, 2});
    archive.writeToPath(path);
}

/// Blocks of 16 bytes, free ones too, and a node over many of them.
void writeSmallBlocks(const std::filesystem::path &path) {
    BlockFileBytes file(200, 16);
    std::uint32_t next = 0;
    const ZPData root =
        node({}, 2, words({1, 0x0101FFFF, 384, 24, 0, 0, 1, 0xFFFF0001, 368, 4, 0, 0}), 1740);
    for (std::size_t block = (root.size() + 11) / 12; block-- > 0;) {
        const auto offset = static_cast<std::uint32_t>((30 + block) * 16);
        const std::size_t size = std::min<std::size_t>(12, root.size() - block * 12);
        const auto part = root.begin() + static_cast<std::ptrdiff_t>(block * 12);
        file.put(offset, words({next}));
        file.put(offset + 4, ZPData(part, part + static_cast<std::ptrdiff_t>(size)));
        next = offset;
    }
    file.putChain({384, 400}, words({0x0101FFFF, 1, 2, 3, 4, 5}));
    file.putChain({368}, words({1393}));
    file.put(2800, words({0x80000000 | 2816}));
    file.put(2816, words({0x80000000}));
    file.rootOffset = 480;
    file.putHeader(3, 2800, 2816, 2);
    file.writeToPath(path);
}

/// A directory that leads back to itself, and a chain that does.
void writeLoops(const std::filesystem::path &path) {
    BlockFileBytes file(10);
    file.putChain({0x400, 0x800},
                  node(words({0x400, 0xC00, 0xC00}), 2,
                       words({1, 5, 0x1400, 1, 0, 0, 1, 9, 0x1800, 4, 0, 0}), 1740));
    file.putChain({0xC00, 0x1000}, node(words({0x400}), 1, words({1, 7, 0x1400, 4, 0, 0}), 1740));
    file.put(0x1400, words({0x1800}));
    file.put(0x1800, words({0x1400}));
    file.rootOffset = 0x400;
    file.putHeader(3);
    file.writeToPath(path);
}

/// Land blocks that share one chain: `blockCount` blocks, the last of which leads back to one of
/// them, or is the last.
void writeSharedChain(const std::filesystem::path &path, std::uint32_t entryCount,
                      std::uint32_t blockCount, bool loops) {
    ArchiveBytes archive;
    const std::uint32_t chain = archive.addChain(ZPData(blockCount * 252, std::byte{20}));
    if (loops)
        archive.poke(chain + (blockCount - 1) * ArchiveBytes::kBlockSize,
                     chain + blockCount / 2 * std::uint32_t{ArchiveBytes::kBlockSize});
    for (std::uint32_t block = 0; block < entryCount; ++block)
        archive.addEntry(block << 16 | 0xFFFF, {chain, blockCount * 252 + loops, 0, 1});
    archive.writeToPath(path);
}

/// One file, in an archive of one of the older header versions.
void writeOlder(unsigned version, const std::filesystem::path &path) {
    BlockFileBytes file(12, 512);
    const ZPData entry =
        version == 1 ? words({0xFFFF0001, 0x1000, 4}) : words({0xFFFF0001, 0x1000, 4, 99});
    file.putChain({0x400, 0x600, 0x800}, node({}, 1, entry, version == 1 ? 996 : 1244));
    file.putChain({0x1000}, words({77}));
    file.rootOffset = 0x400;
    file.putHeader(version);
    file.writeToPath(path);
}

void write(const std::filesystem::path &path, const ZPData &bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

void write(const std::filesystem::path &path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

ZPData bytesOfFile(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    const auto view = std::as_bytes(std::span(bytes));
    return {view.begin(), view.end()};
}

/// The input of a whole run.
void writeRun(const std::filesystem::path &path, unsigned options, unsigned scale,
              std::string_view plot, const ZPData &old, const ZPData &archive) {
    ZPData head = {static_cast<std::byte>(options), static_cast<std::byte>(scale)};
    ZPAppendLittleInt16(head, static_cast<std::uint16_t>(plot.size()));
    ZPAppendLittleInt16(head, static_cast<std::uint16_t>(old.size()));
    const auto text = std::as_bytes(std::span(plot));
    write(path, joined({head, ZPData(text.begin(), text.end()), old, archive}));
}

/// A decoder and two records for it.
void writeDecoding(const std::filesystem::path &path, unsigned choice, std::string_view script,
                   const ZPData &one, const ZPData &other) {
    ZPData head = {static_cast<std::byte>(choice)};
    ZPAppendLittleInt16(head, static_cast<std::uint16_t>(script.size()));
    ZPAppendLittleInt16(head, static_cast<std::uint16_t>(one.size()));
    const auto text = std::as_bytes(std::span(script));
    write(path, joined({head, ZPData(text.begin(), text.end()), one, other}));
}

/// Every function that a script may call.
constexpr std::string_view kScript = R"(
local t = { 3, 1, 2, x = 'y', [true] = 1.5, [{}] = 0 }
return { name = 'X', types = { 1 }, classes = { 'WQPalette' }, games = { 'ostvale' },
  extension = 'x', decode = function(cursor, out)
    out:identifier(cursor:readLittleInt32())
    for k, v in pairs(t) do out:text(tostring(k), tostring(v)) end
    table.sort(t) table.sort(t, function(a, b) return a > b end)
    out:text('j', table.concat(t, ', ') .. ('%5.1f %q %s'):format(1.5, 'a', {}))
    out:bytes('u', ('aB'):upper():lower():reverse():sub(1, -1) .. string.char(('x'):byte(1, -1)))
    for i, v in ipairs(table.pack(table.unpack(t))) do out:number('i', math.max(i, v // 1)) end
    local n = cursor:readByte()
    out:groups('g', n, function(i)
      out:flags('f', cursor:readByte(), { [0] = 'a', [3] = 'b' })
      out:bits('b', n, 0, 3, { 'one' }) out:hex('h', n) out:signed('s', n, 4)
    end)
    out:group('v', function() out:vector('v', cursor:readLittleVector3()) end)
    out:list('l', 2, function() out:number('n', cursor:readLittleInt64()) end)
    out:number('d', cursor:readLittleFloat64()) out:boolean('e', cursor:isAtEnd())
    out:text('n', cursor:wq_readLengthVar30StringAndAlign(true))
    assert(select('#', next(t)) == 2 and tonumber('0x10') == 16, 'odd')
    if cursor:remaining() > 9 then while true do t[#t + 1] = t end end
  end }
)";

} // namespace

int main(int argumentCount, char **arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s <corpus folder>\n", arguments[0]);
        return 1;
    }
    const std::filesystem::path corpus = arguments[1];
    for (const char *name : {"archive", "region_record", "plot_file", "drawing", "data_cursor",
                             "work", "run", "check", "decoder"})
        std::filesystem::create_directories(corpus / name);

    writeWorld(corpus / "archive/world");
    writeSmallBlocks(corpus / "archive/small_blocks");
    writeLoops(corpus / "archive/loops");
    writeOlder(1, corpus / "archive/version_1");
    writeOlder(2, corpus / "archive/version_2");

    write(corpus / "region_record/whole", SampleRegionRecord());

    write(corpus / "plot_file/towns",
          "town;24.2S 57.0E;Norwick\nruin; 0.5n,\t1e1W ;\n;-3.25N101.9w;\xC3\x9C"
          "bergang;x\n\n"
          "dot;.5S 5.E;\r\nfar;1e39N 1e-50E;far\nbad;12.3;\n;;\nnan;nanN infE;\n");
    write(corpus / "plot_file/coordinate", "+12.345SS , 045.60e and more");

    write(corpus / "drawing/labels",
          "a;0N 0E;Ωμέγα שלום नमस्ते\tтест\n;101.9N 101.9W;\x01\x02\xE2\x80\xAE\n"
          ";1N 1E;" +
              std::string(3000, 'W') + "\n;3e30N 1E;far\n;.1N .1E;\n");

    writeSharedChain(corpus / "work/long_file", 500, 100, false);
    writeSharedChain(corpus / "work/long_loop", 500, 100, true);

    writeSharedChain(corpus / "check/shared", 3, 4, false);

    const ZPData world = bytesOfFile(corpus / "archive/world");
    const std::string_view town = "town;24.2S 57.0E;Norwick\n";
    writeRun(corpus / "run/plain", 0, 0, "", {}, world);
    writeRun(corpus / "run/everything", 0xEF, 0, town, bytesOfFile(corpus / "archive/version_2"),
             world);
    writeRun(corpus / "run/height_map", 0x10, 3, "", {}, bytesOfFile(corpus / "archive/loops"));
    writeRun(corpus / "run/unchanged", 0xC0, 1, "", world, world);

    const ZPData records = hex("01000004 01 09 0000803F 0000003F 00000040 FFFFFFFFFFFFFFFF"
                               "0100000000000000 9A9999999999B93F 02 6162 00");
    writeDecoding(corpus / "decoder/land_block", 0, "", landBlock(0x8080FFFF), landBlock(1));
    writeDecoding(corpus / "decoder/version", 1, "", words({1394}), words({1, 2}));
    writeDecoding(corpus / "decoder/region_record", 2, "", SampleRegionRecord(), {});
    writeDecoding(corpus / "decoder/chronicle", 3, "",
                  hex("01000042 01 07D9 23 01 00000040 0200 6162 0000"), hex("01000042 FF"));
    writeDecoding(corpus / "decoder/township", 4, "",
                  hex("00000040 0200 6162 0000803F 00000040 FF0F 01 01000041 00"), {});
    writeDecoding(corpus / "decoder/trader", 5, "",
                  hex("01000041 0161 0000 04000000 01000040 0100 1C000006 B2010000 0C00 016100 00"),
                  hex("01000041"));
    writeDecoding(corpus / "decoder/script", 255, kScript, records, joined({records, ZPData(16)}));

    // Each operation once, over strings of all kinds.
    write(corpus / "data_cursor/strings",
          joined({hex("10 00 01 82 03 84 05 86 07 88 49 0A 0B 0C 0D 2E 0F"),
                  hex("02 8041 05 4142434445 0300 414243 00 02000000 4142"), hex("C0000003 616263"),
                  hex("02 3DD8 00DE 01 00D8 0200 1424 03 4100 4200 4300"),
                  hex("01020304 FF01 0180 0200 0280 03000400 0000000000000000 0000 0004")}));
    return 0;
}
