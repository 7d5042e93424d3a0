#include <array>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/model.h"
#include "tests/support/routing.h"

namespace test {

namespace {

using namespace std::string_literals;

class tRouting : public tModel {
 protected:
  void SetUp() override {
    describe("", kRoutingDescription);
    ASSERT_TRUE(session_) << status_.text();
  }
  tRoutingSession open(const std::string& name) { return openRouting(uniqueName(name), status_); }
  // Devices live as long as the process, by their whole name: a test's own text behind the fourth
  // number, which is passed over, gives it devices of its own.
  static std::string uniqueName(const std::string& name) {
    const auto* const info = testing::UnitTest::GetInstance()->current_test_info();
    return name + " " + info->name();
  }
  std::string calculate(const tRoutingSession& session, const std::string& seeds,
                        const std::string& destinations) {
    return test::calculate(session, seeds, destinations, status_);
  }
  std::string route(const tRoutingSession& session, const std::string& terminal,
                    const std::string& token = "") {
    return test::route(session, terminal, token, status_);
  }
  bool isThere(const tRoutingSession& session, std::uint32_t ticket) {
    telmar_ra_varmex_programRoute(session.get(), ticket, status_);
    const std::string failure = takeFailure();
    EXPECT_TRUE(failure.empty() || failure == noRoute_) << failure;
    return failure.empty();
  }
  const std::string noRoute_ = failure(-313325, "(-313300-25)");
};

TEST_F(tRouting, listsTerminals) {
  const tRoutingSession session = open("5.0.0:7");
  ASSERT_TRUE(session) << status_.text();
  EXPECT_EQ(telmar_ra_varmex_getAPIVersion(), 3U);
  const tIterator iterator(telmar_ra_varmex_getAllTerminals(session.get(), status_));
  // What it answers to each name, whichever type that is of, or of none.
  const auto answers = [&] {
    std::string all;
    for (const char* name : {"name", "busType", "busName", "busLine", "isExternal", "isOwned",
                             "none", static_cast<const char*>(nullptr)}) {
      const char* const text =
          telmar_ra_varmex_TerminalIterator_getStringAttribute(iterator.get(), name, status_);
      const std::uint32_t number =
          telmar_ra_varmex_TerminalIterator_getU32Attribute(iterator.get(), name, status_);
      const bool flag =
          telmar_ra_varmex_TerminalIterator_getBoolAttribute(iterator.get(), name, status_);
      all += std::string(text ? text : "-") + ' ' + std::to_string(number) + (flag ? " 1|" : " 0|");
    }
    return all;
  };
  // Groups of lines by the ends of their names.
  const std::array<std::string, 3> groups[] = {
      {"PXI_Trig", "01234567", "PXIChassis1TriggerBus1"},
      {"PXI_Star", "\0"s, "PXIeChassis(S, V, M)/StarTrigger1Line0"},
      {"PXIe_DStar", "ABC", "PXIeChassis(S, V, M)/DStarTrigger1Set0"}};
  for (const auto& [type, lines, bus] : groups) {
    for (std::size_t line = 0; line < lines.size(); ++line) {
      EXPECT_EQ(answers(), (type + lines[line]).c_str() + " 0 0|"s + type + " 0 0|" + bus +
                               " 0 0|- " + std::to_string(line) + " 0|- 0 1|- 0 0|- 0 0|- 0 0|");
      EXPECT_FALSE(telmar_ra_varmex_TerminalIterator_isEnd(iterator.get()));
      telmar_ra_varmex_TerminalIterator_next(iterator.get(), status_);
    }
  }
  // At the end nothing is answered, and moving on changes nothing.
  telmar_ra_varmex_TerminalIterator_next(iterator.get(), status_);
  EXPECT_TRUE(telmar_ra_varmex_TerminalIterator_isEnd(iterator.get()));
  EXPECT_EQ(answers(), "- 0 0|- 0 0|- 0 0|- 0 0|- 0 0|- 0 0|- 0 0|- 0 0|");
  EXPECT_EQ(status_.code(), 0);
  const std::string unsupported = failure(-52002, "nOSTRELS100::tStatus::kFeatureUnsupported");
  telmar_ra_varmex_TerminalIterator_resetTerminal(iterator.get(), nullptr, status_);
  EXPECT_EQ(takeFailure(), unsupported);
  EXPECT_EQ(telmar_ra_varmex_TerminalIterator_calculateResetTerminal(session.get(), nullptr,
                                                                     nullptr, status_),
            nullptr);
  EXPECT_EQ(takeFailure(), unsupported);
  telmar_ra_varmex_destroySession(nullptr);
  telmar_ra_varmex_TerminalIterator_destroy(nullptr);
}

TEST_F(tRouting, needsADeviceWithItsGroups) {
  EXPECT_TRUE(open("5.0.0:0"));
  EXPECT_TRUE(open("5.0.0:1"));
  for (const char* name :
       {"5.0.0", "5.0:7", "x", "", "5,0.0:1", static_cast<const char*>(nullptr)}) {
    EXPECT_FALSE(tRoutingSession(telmar_ra_varmex_createSession(name, std::realloc, status_)));
    EXPECT_EQ(takeFailure(), refusal("InvalidParameter"));
  }
  EXPECT_FALSE(open("9.0.0:1"));
  EXPECT_TRUE(takeFailure().starts_with("-380751 varmex_errorUnknownItem"));
  EXPECT_FALSE(open("6.0.0:2"));
  EXPECT_TRUE(takeFailure().starts_with("-380758 varmex_errorStarController"));
  status_.record().code = -1;
  EXPECT_FALSE(open("5.0.0:0")) << "an error in the record stops the call";
}

TEST_F(tRouting, answersRoutesForSeedsOnWantedTerminals) {
  const tRoutingSession session = open("5.0.0:7");
  const std::string seeds =
      R"( [ {"terminal":"PXI_Trig3","cost":2.9,"constraints":{"a":[{}]},"srcDeviceToken":"t"} ,)"
      R"({"other":null,"constraints":{},"cost":-1,"terminal":"PXI_Star"},)"
      R"({"cost":1,"terminal":"PXI_Trig3","constraints":{}},] )";
  EXPECT_EQ(
      calculate(session, seeds, R"(["PXI_Star","PXI_Trig3","PXI_Trig4","n\"one","PXI_Star",])"),
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

TEST_F(tRouting, takesSeedsOfAnyForm) {
  const tRoutingSession session = open("5.0.0:7");
  std::vector<std::string> forms = {
      R"("cost":1,"constraints":{"a":[1,{"b":"]"}]},"srcDeviceToken":"t")",
      R"("cost":1,"constraints":{},"srcDeviceToken":"t","u":-1.5e+3)",
      R"("u":"\u00Ff\n","cost" : 1 , "constraints" : { } )", "\"cost\":1,\r\n\t\"constraints\":{}"};
  for (const std::string cost : {"-", "99999999999", "-1", "1.", "1e400", "-1e30", "1E2", "007"}) {
    forms.push_back("\"cost\":" + cost + R"(,"constraints":{})");
  }
  for (const std::string& form : forms) {
    const std::string seeds = R"([{"terminal":"PXI_Star",)" + form + "}]";
    EXPECT_NE(calculate(session, seeds, R"(["PXI_Star"])"), "[]") << form;
  }
  EXPECT_EQ(takeFailure(), "");
}

TEST_F(tRouting, rejectsMalformedLists) {
  const tRoutingSession session = open("5.0.0:7");
  const auto expectRejected = [&](const std::string& seeds, const std::string& destinations,
                                  const std::string& reason) {
    EXPECT_EQ(calculate(session, seeds, destinations), "<null>") << seeds;
    EXPECT_EQ(takeFailure(), reason) << seeds;
  };
  const auto invalid = [](const std::string& debug) {
    return failure(-52005, "ostrelerr_invalidParameter", R"({"telmar_debug":)" + debug + "}");
  };
  const auto told = [&](const std::string& message, const std::string& json) {
    return invalid(R"({"msg":")" + message + R"(","json":)" + json + "}");
  };
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
    expectRejected("[" + std::string(text) + " ", "[]", told(message, text));
  }
  const std::string notAnObject = invalid("\"seed must be an object\"");
  expectRejected("[1]", "[]", notAnObject);
  expectRejected("[]", R"(["a",1])", told("Terminals must be strings", R"(["a",1])"));
  expectRejected(seed("none"), "[]", failure(-313328, "(-313300-28)"));
  // What leaves the scanner nowhere is rejected, however deep it nests.
  const std::string deep(1000000, '[');
  std::vector<std::pair<std::string, std::string>> lists = {
      {R"([{"terminal":"PXI_Star)", "[]"}, {"[]", R"(["PXI_Star)"}, {"[]", R"(["\x"])"}};
  for (const std::string& end :
       {""s, ",}"s, R"(,"u":{}})"s, R"(,"u":x})"s, R"(,"srcDeviceToken":"t")"s, ",\"u\""s,
        R"(,"constraints":{"a":)" + deep, R"(,"u":)" + deep}) {
    lists.emplace_back(R"([{"terminal":"PXI_Star","cost":1,"constraints":{})" + end, "[]");
  }
  for (const auto& [some, wanted] : lists) {
    calculate(session, some, wanted);
    EXPECT_EQ(status_.code(), -52005);
    varmex_releaseStatus(status_);
  }
  telmar_ra_varmex_calculateRoute(session.get(), nullptr, "[]", nullptr, nullptr, status_);
  EXPECT_EQ(takeFailure(), noRoute_);
}

// For who holds what see coordinatorTest.cpp.
TEST_F(tRouting, otherOperations) {
  const tRoutingSession session = open("5.0.0:1");
  tText text;
  telmar_ra_varmex_getHandledConstraints(session.get(), &text.text, status_);
  EXPECT_STREQ(text.text, "[]");
  telmar_ra_varmex_getHandledConstraints(session.get(), nullptr, status_);
  EXPECT_EQ(takeFailure(), noRoute_);
  for (const char* token : {"a", "b"}) route(session, "PXI_Trig5", token);
  telmar_ra_varmex_reserveRoute(session.get(), 1, nullptr, status_);
  EXPECT_TRUE(isThere(session, 1));
  telmar_ra_varmex_reserveRoute(session.get(), 2, nullptr, status_);
  EXPECT_EQ(takeFailure(), kInUse);
  telmar_ra_varmex_unprogramRoute(session.get(), 1);
  telmar_ra_varmex_beginExceptionalRouteDestruction(session.get(), 1);
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 1, &text.text, status_);
  EXPECT_STREQ(text.text, "[\"PXI_Trig0\"]") << "the first terminal, whichever the route has";
  EXPECT_FALSE(isThere(session, 3));
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 3, &text.text, status_);
  EXPECT_EQ(takeFailure(), noRoute_);
  telmar_ra_varmex_reserveRoute(session.get(), 3, nullptr, status_);
  EXPECT_EQ(takeFailure(), noRoute_);
  telmar_ra_varmex_unreserveRoute(session.get(), 3);
}

std::vector<std::size_t> askedSizes;

TEST_F(tRouting, asksForWholeBuffers) {
  const std::string seeds = seed("PXI_Trig5");
  const auto openWith = [this](telmar_ra_ReallocFunc function) {
    const std::string name = uniqueName("5.0.0:1");
    return tRoutingSession(telmar_ra_varmex_createSession(name.c_str(), function, status_));
  };
  const tRoutingSession session = openWith([](void* existing, std::size_t size) {
    askedSizes.push_back(size);
    return std::realloc(existing, size);
  });
  askedSizes.clear();
  tText text;
  telmar_ra_varmex_getHandledConstraints(session.get(), &text.text, status_);
  calculate(session, seeds, "[]");
  calculate(session, seeds, repeated("\"PXI_Trig5\"", 3));
  telmar_ra_varmex_getRouteTerminalPath(session.get(), 1, &text.text, status_);
  EXPECT_EQ(askedSizes, (std::vector<std::size_t>{3, 256, 512, 256}));
  const telmar_ra_ReallocFunc refuse = [](void*, std::size_t) -> void* { return nullptr; };
  for (const telmar_ra_ReallocFunc function : {refuse, telmar_ra_ReallocFunc()}) {
    const tRoutingSession other = openWith(function);
    EXPECT_EQ(calculate(other, seeds, "[\"PXI_Trig5\"]"), "<null>");
    EXPECT_EQ(takeFailure(), failure(-313314, "(-313300-14)"));
    EXPECT_FALSE(isThere(other, 1)) << "no route of that call exists";
  }
}

TEST_F(tRouting, hasTicketsFor1024Routes) {
  const tRoutingSession session = open("5.0.0:1");
  // Routes to so many destinations.
  const auto routesTo = [&](const tRoutingSession& from, std::size_t count) {
    return nlohmann::json::parse(
        calculate(from, seed("PXI_Trig5"), repeated("\"PXI_Trig5\"", count)), nullptr, false);
  };
  const auto routes = routesTo(session, 1023);
  EXPECT_EQ(routes.size(), 1023U);
  EXPECT_EQ(routes.back()["ticket"], 1023);
  EXPECT_EQ(routesTo(session, 1)[0]["ticket"], 1024);
  EXPECT_TRUE(routesTo(session, 1).is_discarded());
  EXPECT_EQ(takeFailure(), failure(-313328, "(-313300-28)"));
  EXPECT_EQ(calculate(session, seed("PXI_Trig5"), "[\"PXI_Trig4\"]"), "[]") << "needs no ticket";
  telmar_ra_varmex_destroyRoute(session.get(), 77);
  EXPECT_EQ(routesTo(session, 1)[0]["ticket"], 77);
  // A call's own routes are not looked at, so a very long list repeats tickets. Each stands for the
  // first of its routes.
  const tRoutingSession other = open("5.0.0:1");
  const std::string seeds = seed("PXI_Trig5", "a") + seed("PXI_Trig4", "a");
  const auto many = nlohmann::json::parse(
      calculate(other, std::string(seeds).replace(seeds.find("]["), 2, ","),
                repeated("\"PXI_Trig5\"", 1024).replace(1, 0, "\"PXI_Trig4\",")));
  EXPECT_EQ(many[1023]["ticket"], 1024);
  EXPECT_EQ(many[1024]["ticket"], 1);
  for (const char* held : {"PXI_Trig4", "PXI_Trig5"}) {
    telmar_ra_varmex_reserveRoute(other.get(), 1, nullptr, status_);
    EXPECT_EQ(route(open("5.0.0:1"), held, "b"), "[]");
    telmar_ra_varmex_destroyRoute(other.get(), 1);
    EXPECT_NE(route(open("5.0.0:1"), held, "b"), "[]");
  }
  EXPECT_FALSE(isThere(other, 1));
  // Any number of routes goes as quickly as it came.
  const tRoutingSession third = open("5.0.0:1");
  routesTo(third, 100000);
  for (std::uint32_t n = 0; n < 100 * 1024; ++n) {
    telmar_ra_varmex_destroyRoute(third.get(), n % 1024 + 1);
  }
  EXPECT_FALSE(isThere(third, 1));
}

}  // namespace

}  // namespace test
