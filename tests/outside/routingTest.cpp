#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"
#include "tests/support/routing.h"

namespace test {

namespace {

class tRouting : public tModel {
 protected:
  void SetUp() override {
    describe("", kRoutingDescription);
    ASSERT_TRUE(session_) << status_.text();
  }
  tRoutingSession open(const std::string& name) {
    return tRoutingSession(
        telmar_ra_varmex_createSession(uniqueName(name).c_str(), std::realloc, status_));
  }
  // Devices live as long as the process, by their whole name: a test's own text behind the fourth
  // number, which is passed over, gives it devices of its own.
  static std::string uniqueName(const std::string& name) {
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    return name + " " + info->name();
  }
  std::string calculate(const tRoutingSession& session, const std::string& seeds,
                        const std::string& destinations) {
    tText reply;
    EXPECT_EQ(telmar_ra_varmex_calculateRoute(session.get(), seeds.c_str(), destinations.c_str(),
                                              nullptr, &reply.text, status_),
              0);
    return reply.text ? reply.text : "<null>";
  }
  std::string reserve(const tRoutingSession& session, std::uint32_t ticket) {
    tText conflicts;
    telmar_ra_varmex_reserveRoute(session.get(), ticket, &conflicts.text, status_);
    return conflicts.text ? conflicts.text : "";
  }
  testing::AssertionResult invalidSeed(const std::string& message, const std::string& json) {
    return failed(-52005, "ostrelerr_invalidParameter",
                  R"({"telmar_debug":{"msg":")" + message + R"(","json":)" + json + "}}");
  }
};

TEST_F(tRouting, listsTerminals) {
  const tRoutingSession session = open("5.0.0:7");
  ASSERT_TRUE(session) << status_.text();
  EXPECT_EQ(telmar_ra_varmex_getAPIVersion(), 3U);
  const tIterator iterator(telmar_ra_varmex_getAllTerminals(session.get(), status_));
  std::string terminals;
  for (; !telmar_ra_varmex_TerminalIterator_isEnd(iterator.get());
       telmar_ra_varmex_TerminalIterator_next(iterator.get(), status_)) {
    for (const char* name : {"name", "busType", "busName"}) {
      terminals +=
          telmar_ra_varmex_TerminalIterator_getStringAttribute(iterator.get(), name, status_);
      terminals += ' ';
    }
    terminals += std::to_string(
        telmar_ra_varmex_TerminalIterator_getU32Attribute(iterator.get(), "busLine", status_));
    terminals += '\n';
    EXPECT_TRUE(
        telmar_ra_varmex_TerminalIterator_getBoolAttribute(iterator.get(), "isExternal", status_));
    EXPECT_FALSE(
        telmar_ra_varmex_TerminalIterator_getBoolAttribute(iterator.get(), "isOwned", status_));
    EXPECT_EQ(
        telmar_ra_varmex_TerminalIterator_getStringAttribute(iterator.get(), "isOwned", status_),
        nullptr);
  }
  std::string expected;
  for (int line = 0; line < 8; ++line) {
    const std::string number = std::to_string(line);
    expected += "PXI_Trig" + number + " PXI_Trig PXIChassis1TriggerBus1 " + number + "\n";
  }
  expected += "PXI_Star PXI_Star PXIeChassis(S, V, M)/StarTrigger1Line0 0\n";
  const char* const letters[] = {"A", "B", "C"};
  for (int line = 0; line < 3; ++line) {
    expected += std::string("PXIe_DStar") + letters[line] +
                " PXIe_DStar PXIeChassis(S, V, M)/DStarTrigger1Set0 " + std::to_string(line) + "\n";
  }
  EXPECT_EQ(terminals, expected);
  // At the end nothing is answered, and moving on changes nothing.
  telmar_ra_varmex_TerminalIterator_next(iterator.get(), status_);
  EXPECT_TRUE(telmar_ra_varmex_TerminalIterator_isEnd(iterator.get()));
  EXPECT_EQ(telmar_ra_varmex_TerminalIterator_getStringAttribute(iterator.get(), "name", status_),
            nullptr);
  EXPECT_EQ(status_.code(), 0);
  telmar_ra_varmex_TerminalIterator_resetTerminal(iterator.get(), nullptr, status_);
  EXPECT_TRUE(failed(-52002, "nOSTRELS100::tStatus::kFeatureUnsupported"));
  EXPECT_EQ(telmar_ra_varmex_TerminalIterator_calculateResetTerminal(session.get(), nullptr,
                                                                     nullptr, status_),
            nullptr);
  EXPECT_TRUE(failed(-52002, "nOSTRELS100::tStatus::kFeatureUnsupported"));
  telmar_ra_varmex_destroySession(nullptr);
  telmar_ra_varmex_TerminalIterator_destroy(nullptr);
}

TEST_F(tRouting, needsADeviceWithItsGroups) {
  EXPECT_TRUE(open("5.0.0:0"));
  EXPECT_TRUE(open("5.0.0:1"));
  for (const char* name : {"5.0.0", "5.0:7", "x", "", "5,0.0:1"}) {
    EXPECT_FALSE(tRoutingSession(telmar_ra_varmex_createSession(name, std::realloc, status_)));
    EXPECT_TRUE(failed(-380755, "varmex_errorInvalidParameter")) << name;
  }
  EXPECT_FALSE(open("9.0.0:1"));
  EXPECT_EQ(status_.code(), varmex_errorUnknownItem);
  varmex_releaseStatus(status_);
  EXPECT_FALSE(open("6.0.0:2")) << "the star controller has no line";
  EXPECT_EQ(status_.code(), varmex_errorStarController);
  EXPECT_EQ(telmar_ra_varmex_createSession(nullptr, nullptr, status_), nullptr)
      << "an error in the record stops the call";
}

TEST_F(tRouting, answersRoutesForSeedsOnWantedTerminals) {
  const tRoutingSession session = open("5.0.0:7");
  const std::string seeds =
      R"( [ {"terminal":"PXI_Trig3","cost":2.9,"constraints":{"a":[{}]},"srcDeviceToken":"t"} ,)"
      R"({"other":null,"constraints":{},"cost":-1,"terminal":"PXI_Star"},)"
      R"({"cost":1,"terminal":"PXI_Trig3","constraints":{}},] )";
  EXPECT_EQ(calculate(session, seeds, R"(["PXI_Star","PXI_Trig3","PXI_Trig4","none","PXI_Star",])"),
            R"([{"ticket":1,"destination":"PXI_Star","cost":0,"indexOfStartingSeed":1,)"
            R"("constraints":{}},{"ticket":2,"destination":"PXI_Trig3","cost":0,)"
            R"("indexOfStartingSeed":0,"constraints":{}},{"ticket":3,"destination":"PXI_Star",)"
            R"("cost":0,"indexOfStartingSeed":1,"constraints":{}}])");
  EXPECT_EQ(calculate(session, "{}", "[\"PXI_Trig0\"]"), "[]");
  EXPECT_EQ(calculate(session, "", ""), "[]");
  EXPECT_EQ(calculate(session, seed("PXI_Trig"), "[\"\"] and more"),
            R"([{"ticket":4,"destination":"PXI_Trig0","cost":0,"indexOfStartingSeed":0,)"
            R"("constraints":{}}])")
      << "names may be abbreviated";
  EXPECT_EQ(status_.code(), 0) << status_.text();
}

TEST_F(tRouting, rejectsMalformedLists) {
  const tRoutingSession session = open("5.0.0:7");
  const std::pair<const char*, const char*> seeds[] = {
      {"terminal field missing", "{}"},
      {"terminal field missing", R"({"cost":1,"constraints":{}})"},
      {"terminal name must be a string", R"({"terminal":5})"},
      {"srcDeviceToken name must be a string", R"({"srcDeviceToken":5})"},
      {"cost must be a number", R"({"cost":"1"})"},
      {"cost field missing or invalid", R"({"terminal":"PXI_Star"})"},
      {"constraints field missing", R"({"terminal":"PXI_Star","cost":1})"},
      {"constraints field missing", R"({"terminal":"PXI_Star","cost":1,"constraints":[]})"},
      {"terminal field missing", R"({"term\u0069nal":"PXI_Star","cost":1,"constraints":{}})"}};
  for (const auto& [message, text] : seeds) {
    EXPECT_EQ(calculate(session, "[" + std::string(text) + " ", "[]"), "<null>") << text;
    EXPECT_TRUE(invalidSeed(message, text)) << text;
  }
  EXPECT_EQ(calculate(session, "[1]", "[]"), "<null>");
  EXPECT_TRUE(
      failed(-52005, "ostrelerr_invalidParameter", R"({"telmar_debug":"seed must be an object"})"));
  EXPECT_EQ(calculate(session, "[]", R"(["a",1])"), "<null>");
  EXPECT_TRUE(invalidSeed("Terminals must be strings", R"(["a",1])"));
  EXPECT_EQ(calculate(session, seed("none"), "[]"), "<null>");
  EXPECT_TRUE(failed(-313328, "(-313300-28)"));
  // What leaves the scanner nowhere is rejected, however deep it nests.
  const std::string start = R"([{"terminal":"PXI_Star","cost":1,"constraints":{})";
  const std::string deep(1000000, '[');
  for (const std::string& end :
       {std::string(), std::string(",}"), std::string(R"(,"u":{}})"), std::string(R"(,"u":x})"),
        std::string(",\"u\""), R"(,"constraints":{"a":)" + deep, R"(,"u":)" + deep}) {
    EXPECT_EQ(calculate(session, start + end, "[]"), "<null>");
    EXPECT_EQ(status_.code(), -52005);
    varmex_releaseStatus(status_);
  }
  EXPECT_EQ(
      telmar_ra_varmex_calculateRoute(session.get(), nullptr, "[]", nullptr, nullptr, status_), 0);
  EXPECT_TRUE(failed(-313325, "(-313300-25)"));
}

TEST_F(tRouting, holdsTerminalsByToken) {
  const tRoutingSession one = open("5.0.0:1");
  const tRoutingSession two = open("5.0.0:1");
  calculate(one, seed("PXI_Trig1", "a"), "[\"PXI_Trig1\",\"PXI_Trig1\"]");
  calculate(one, seed("PXI_Trig1", "b"), "[\"PXI_Trig1\"]");
  calculate(two, seed("PXI_Trig1", "b"), "[\"PXI_Trig1\"]");
  calculate(two, seed("PXI_Trig1", "a"), "[\"PXI_Trig1\"]");
  EXPECT_EQ(reserve(one, 1), "");
  EXPECT_EQ(reserve(one, 1), "");
  EXPECT_EQ(reserve(one, 2), "") << "the same token joins";
  EXPECT_EQ(status_.code(), 0) << status_.text();
  const std::string identity = std::to_string(reinterpret_cast<std::uintptr_t>(one.get()));
  EXPECT_EQ(reserve(one, 3), R"([{"sessionId":)" + identity + R"(,"ticket":1}])");
  EXPECT_TRUE(failed(-89137, "telmar::errors::kErrorResourcesInUseForRoute"));
  telmar_ra_varmex_reserveRoute(one.get(), 3, nullptr, status_);
  EXPECT_TRUE(failed(-89137, "telmar::errors::kErrorResourcesInUseForRoute"));
  EXPECT_EQ(reserve(two, 1), "") << "no list for another session's terminal";
  EXPECT_TRUE(failed(-89137, "telmar::errors::kErrorResourcesInUseForRoute"));
  EXPECT_EQ(reserve(two, 2), "");
  EXPECT_EQ(calculate(two, seed("PXI_Trig1"), "[\"PXI_Trig1\"]"), "[]") << "held";
  telmar_ra_varmex_destroyRoute(one.get(), 1);
  telmar_ra_varmex_unreserveRoute(one.get(), 2);
  telmar_ra_varmex_unreserveRoute(one.get(), 2);
  EXPECT_EQ(calculate(one, seed("PXI_Trig1", "b"), "[\"PXI_Trig1\"]"), "[]") << "two holds it";
  telmar_ra_varmex_unreserveRoute(two.get(), 2);
  EXPECT_EQ(status_.code(), 0);
  EXPECT_EQ(reserve(two, 1), "");
  EXPECT_EQ(status_.code(), 0) << status_.text();
  reserve(one, 1);
  EXPECT_TRUE(failed(-313325, "(-313300-25)")) << "destroyed";
}

TEST_F(tRouting, aDeadSessionKeepsItsTerminals) {
  tRoutingSession dead = open("5.0.0:1");
  calculate(dead, seed("PXI_Trig1", "a"), "[\"PXI_Trig1\"]");
  reserve(dead, 1);
  dead.reset();
  const tRoutingSession session = open("5.0.0:1");
  EXPECT_EQ(calculate(session, seed("PXI_Trig1", "b"), "[\"PXI_Trig1\"]"), "[]");
  EXPECT_NE(calculate(session, seed("PXI_Trig1", "a"), "[\"PXI_Trig1\"]"), "[]");
  reserve(session, 1);
  EXPECT_EQ(status_.code(), 0) << status_.text();
}

TEST_F(tRouting, otherOperations) {
  const tRoutingSession session = open("5.0.0:1");
  tText text;
  telmar_ra_varmex_getHandledConstraints(session.get(), &text.text, status_);
  EXPECT_STREQ(text.text, "[]");
  telmar_ra_varmex_getHandledConstraints(session.get(), nullptr, status_);
  EXPECT_TRUE(failed(-313325, "(-313300-25)"));
  calculate(session, seed("PXI_Trig5"), "[\"PXI_Trig5\"]");
  telmar_ra_varmex_programRoute(session.get(), 1, status_);
  telmar_ra_varmex_unprogramRoute(session.get(), 1);
  telmar_ra_varmex_beginExceptionalRouteDestruction(session.get(), 1);
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 1, &text.text, status_);
  EXPECT_STREQ(text.text, "[\"PXI_Trig0\"]") << "the first terminal, whichever the route has";
  EXPECT_EQ(status_.code(), 0) << status_.text();
  telmar_ra_varmex_programRoute(session.get(), 2, status_);
  EXPECT_TRUE(failed(-313325, "(-313300-25)"));
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 2, &text.text, status_);
  EXPECT_TRUE(failed(-313325, "(-313300-25)"));
  telmar_ra_varmex_destroyRoute(session.get(), 9);
  telmar_ra_varmex_unreserveRoute(session.get(), 9);
}

std::vector<std::size_t> askedSizes;
void* recordSize(void* existing, std::size_t size) {
  askedSizes.push_back(size);
  return std::realloc(existing, size);
}
void* refuse(void* existing, std::size_t) {
  std::free(existing);
  return nullptr;
}

TEST_F(tRouting, asksForWholeBuffers) {
  const tRoutingSession session(
      telmar_ra_varmex_createSession(uniqueName("5.0.0:1").c_str(), recordSize, status_));
  askedSizes.clear();
  tText text;
  telmar_ra_varmex_getHandledConstraints(session.get(), &text.text, status_);
  const std::string seeds = seed("PXI_Trig5");
  for (const char* destinations : {"[]", "[\"PXI_Trig5\",\"PXI_Trig5\",\"PXI_Trig5\"]"}) {
    telmar_ra_varmex_calculateRoute(session.get(), seeds.c_str(), destinations, nullptr, &text.text,
                                    status_);
  }
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 1, &text.text, status_);
  EXPECT_EQ(askedSizes, (std::vector<std::size_t>{3, 256, 512, 256}));
  for (const auto function : {refuse, static_cast<telmar_ra_ReallocFunc>(nullptr)}) {
    const tRoutingSession other(
        telmar_ra_varmex_createSession(uniqueName("5.0.0:1").c_str(), function, status_));
    char* out = static_cast<char*>(function ? std::malloc(1) : nullptr);
    telmar_ra_varmex_calculateRoute(other.get(), seeds.c_str(), "[\"PXI_Trig5\"]", nullptr, &out,
                                    status_);
    EXPECT_TRUE(failed(-313314, "(-313300-14)"));
    EXPECT_EQ(out, nullptr);
    telmar_ra_varmex_programRoute(other.get(), 1, status_);
    EXPECT_TRUE(failed(-313325, "(-313300-25)")) << "no route of that call exists";
  }
}

std::string repeated(const std::string& element, int times) {
  std::string list = "[";
  for (int n = 0; n < times; ++n) list += (n ? "," : "") + element;
  return list + "]";
}

TEST_F(tRouting, hasTicketsFor1024Routes) {
  const tRoutingSession session = open("5.0.0:1");
  const std::string seeds = seed("PXI_Trig5");
  const auto routes =
      nlohmann::json::parse(calculate(session, seeds, repeated("\"PXI_Trig5\"", 1023)));
  EXPECT_EQ(routes.size(), 1023U);
  EXPECT_EQ(routes.back()["ticket"], 1023);
  EXPECT_NE(calculate(session, seeds, "[\"PXI_Trig5\"]"), "[]");
  EXPECT_EQ(calculate(session, seeds, "[\"PXI_Trig5\"]"), "<null>");
  EXPECT_TRUE(failed(-313328, "(-313300-28)"));
  EXPECT_EQ(calculate(session, seeds, "[\"PXI_Trig4\"]"), "[]") << "needs no ticket";
  telmar_ra_varmex_destroyRoute(session.get(), 77);
  EXPECT_NE(calculate(session, seeds, "[\"PXI_Trig5\"]").find("\"ticket\":77,"), std::string::npos);
  // A call's own routes are not looked at, so a very long list repeats tickets.
  const tRoutingSession other = open("5.0.0:1");
  const auto many = nlohmann::json::parse(calculate(other, seeds, repeated("\"PXI_Trig5\"", 1026)));
  EXPECT_EQ(many[1023]["ticket"], 1024);
  EXPECT_EQ(many[1024]["ticket"], 1);
  EXPECT_EQ(many[1025]["ticket"], 2);
  telmar_ra_varmex_destroyRoute(other.get(), 1);
  telmar_ra_varmex_programRoute(other.get(), 1, status_);
  EXPECT_EQ(status_.code(), 0) << "the second route of that ticket";
  // Any number of routes goes as quickly as it came.
  const tRoutingSession third = open("5.0.0:1");
  calculate(third, seeds, repeated("\"PXI_Trig5\"", 100000));
  for (int round = 0; round < 100; ++round) {
    for (std::uint32_t ticket = 1; ticket <= 1024; ++ticket) {
      telmar_ra_varmex_destroyRoute(third.get(), ticket);
    }
  }
  telmar_ra_varmex_programRoute(third.get(), 1, status_);
  EXPECT_TRUE(failed(-313325, "(-313300-25)"));
}

}  // namespace

}  // namespace test
