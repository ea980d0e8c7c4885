#include "objects/database/dump_objects.h"
#include "source/utility/Errors.h"
#include "tests/objects/stream_support.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kst {
namespace {

using test_support::StreamBytes;

/// What is printed, and behind it the text of the failure, if there is one.
std::string dumped(const StreamBytes& stream) {
    Archive archive = test_support::reading(stream.bytes);
    std::ostringstream out;
    try {
        dump_objects(archive, object_classes(), out);
    } catch (const std::exception& failure) {
        out << failure.what();
    }
    return out.str();
}

StreamBytes constant(float value) {
    return StreamBytes().text("c").f32({value});
}

const StreamBytes constant_stream = StreamBytes().object(0x2060697E, 9, constant(0.5f));
const std::string constant_line = "ConstFloatController 0x2060697E ref=9 size=6 name=\"c\" value=0.5\n";

StreamBytes counted(std::uint32_t count, const StreamBytes& objects) {
    StreamBytes stream;
    stream.u32(count).bytes += objects.bytes;
    return stream;
}

TEST(DumpObjectsTest, ALineAnObjectWithItsFields) {
    StreamBytes roomy = constant(2);
    roomy.bytes += "spare";
    EXPECT_EQ(dumped(StreamBytes()
                         .u32(8)
                         .object(0x22126DC0, 4, StreamBytes().text("gaze").u32(0).u32(5).u32(4294967295))
                         .object(0x3D0B7EC7, 5, StreamBytes().text("").f32({1, 2, 3, 0, 0, 0, 1}).u32(4294967295))
                         .object(0x3D0B7EC7, 4294967295, StreamBytes().text("").f32({0, 0, 0, 0, 0, 0, 1}).u32(0))
                         .object(0x648A206C, 6,
                                 StreamBytes().text("turn").u32(2).f32({0, 1.5f}).u32(2).f32(
                                     {0, 0, 0, 0, 1, 1.5f, 1, 0, 0, 0}))
                         .object(0x29743550, 7, StreamBytes().text("").u32(0).f32({1, 1}).u32(1).f32({1, 2, 3, 4}))
                         .object(0x2CB20689, 8, StreamBytes().text("p").text("images\\wall"))
                         .object(0x2060697E, 9, roomy)
                         .object(0x185328D0, 10, StreamBytes().text("Orc"))),
              "LookAtRotationController 0x22126DC0 ref=4 size=17 name=\"gaze\" roll=0 target=5 object=4294967295\n"
              "Object3D 0x3D0B7EC7 ref=5 size=33 name=\"\" position=(1 2 3) rotation=(0 0 0 1) parent=4294967295\n"
              "Object3D 0x3D0B7EC7 ref=4294967295 size=33 name=\"\" position=(0 0 0) rotation=(0 0 0 1) parent=0\n"
              "QuatLinearRotationController 0x648A206C ref=6 size=61 name=\"turn\" flags=2 start=0 end=1.5 "
              "keys=2[0:(0 0 0 1) 1.5:(1 0 0 0)]\n"
              "BezierFloatController 0x29743550 ref=7 size=33 name=\"\" flags=0 start=1 end=1 keys=1[1:(2 3 4)]\n"
              "GeneralImageParser 0x2CB20689 ref=8 size=14 name=\"p\" path=\"images\\\\wall\"\n"
              "ConstFloatController 0x2060697E ref=9 size=11 name=\"c\" value=2 unread=5\n"
              "StatsBlock 0x185328D0 ref=10 size=4 name=\"Orc\"\n");
}

TEST(DumpObjectsTest, NamesCannotLeaveTheirLine) {
    std::ostringstream out;
    print_quoted(out,
                 "a\"\\\n\x1B[2J\x7F \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\x9B \xC0\x80 \xED\xA0\x80 \xE2\x82");
    EXPECT_EQ(out.str(), "\"a\\\"\\\\\\x0A\\x1B[2J\\x7F \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \\xC2\\x9B \\xC0\\x80 "
                         "\\xED\\xA0\\x80 \\xE2\\x82\"");
}

TEST(DumpObjectsTest, FailuresKeepTheLinesBeforeThem) {
    const std::string past_end = "Archive::checked_read() Attempt to read past end of archive 'test.objects'";
    EXPECT_EQ(dumped(StreamBytes()), past_end);
    EXPECT_EQ(dumped(counted(2, constant_stream)), constant_line + past_end);
    StreamBytes stream = constant_stream;
    EXPECT_EQ(dumped(counted(2, stream.object(0xBAD, 1, {}))),
              constant_line + "ObjectDatabase::load_content() unknown object type 0x00000BAD in test.objects");
    stream = constant_stream;
    EXPECT_EQ(dumped(counted(2, stream.object(0x2060697E, 1, StreamBytes().text("cut")))), constant_line + past_end);
    EXPECT_EQ(
        dumped(counted(2, StreamBytes().object(0x2060697E, 9, constant(0.5f)).object(0x2060697E, 9, constant(0.5f)))),
        constant_line + constant_line +
            "ReferenceMap::register_ref() a reference is already registered with a different object in "
            "test.objects");
    EXPECT_EQ(dumped(counted(1, StreamBytes().object(0x33DA0FC4, 1, StreamBytes().text("").u32(1).u32(2).u32(0)))),
              "XYZVector3Controller 0x33DA0FC4 ref=1 size=13 name=\"\" x=1 y=2 z=0\n"
              "ReferenceMap::check_unresolved() The reference map contains unresolved references in test.objects");
}

} // namespace
} // namespace kst
