#include <thread>

#include "server/address.h"
#include "server/factory.h"
#include "support/component_test.h"

namespace vellum250::server {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 10;

// One page's work: adds addresses of one person and amends them. Gives what went wrong.
std::string Work(const Text& connectionString, int32_t person) {
  try {
    const Ref<address> page = MakeObject<address>();
    const auto config = MakeObject<Dictionary>();
    config->Set(u"globalShowLabel", false);
    config->Set(u"globalEnablePaf", false);
    config->Set(u"globalDisplayAsReadOnly", 0);
    config->Set(u"globalLocationUpdate_11", 1);
    page->Connection(connectionString);
    page->TextID(person);
    page->appDictWebConfig(ObjectRef(config));
    const Text town = u"Town " + NumberText(person);
    for (int round = 0; round < kRounds; ++round) {
      int32_t link = 0;
      Text main;
      const auto amend = [&](TextView postcode) {
        return page->AmmendLocation(u"INDIVIDUAL", person, link, u"", u"", u"1 Road", u"", u"",
                                    town, u"", Text(postcode), u"", 201, main, 11, u"", false,
                                    false, 0, 0, 0, 0, u"", u"");
      };
      if (amend(u"A1") <= 0) return "not added: " + ToUtf8(page->LastError);
      main = round == 0 ? u"Y" : u"";
      if (amend(u"A1") != 0) return "changed without a change";
      if (amend(u"B2") != link) return "not amended";
      const Variant markup =
          page->BuildAddress(64, 0, u"", u"", u"", u"", u"", town, u"", u"", u"", u"", 0, u"", u"Y",
                             true, u"", person, link, u"", u"", u"");
      if (markup.As<Text>().find(u"value=\"" + town + u"\"") == Text::npos) return "another town";
    }
    return "";
  } catch (const Failure& failure) {
    return ToUtf8(failure.Description());
  }
}

// Runs the pages of all threads; each has its own person.
void RunPages(const std::vector<const support::ReferenceDatabase*>& databases) {
  std::vector<std::string> wrong(kThreads);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      wrong[i] =
          Work(databases[i % databases.size()]->ConnectionString(), static_cast<int32_t>(i) + 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string& failure : wrong) EXPECT_EQ(failure, "");
}

void AddPeople(const support::ReferenceDatabase& database) {
  database.Query(
      u"INSERT INTO lookup_type (lookup_type_code) VALUES ('CTRY') "
      u"SET IDENTITY_INSERT lookup ON "
      u"INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc) VALUES "
      u"(201, 1, 'UK', 'United Kingdom') "
      u"SET IDENTITY_INSERT lookup OFF");
  for (int i = 0; i < kThreads; ++i) {
    database.Query(u"INSERT INTO individual (surname) VALUES ('Person')");
  }
}

TEST(Threads, ShareOneDatabase) {
  const support::ReferenceDatabase shared(support::Contents::Schema);
  AddPeople(shared);
  RunPages({&shared});
  for (int32_t person = 1; person <= kThreads; ++person) {
    const Text rows =
        u"individual_loc ll JOIN location l ON l.location_ref = ll.location_ref "
        u"WHERE individual_ref = " +
        NumberText(person);
    EXPECT_EQ(shared.Value(u"SELECT count(*) FROM " + rows + u" AND l.town = 'Town " +
                           NumberText(person) + u"' AND l.postcode = 'B2'"),
              std::to_string(kRounds));
    EXPECT_EQ(shared.Value(u"SELECT count(*) FROM " + rows + u" AND main_location = 'Y'"), "1");
  }
  EXPECT_EQ(shared.Value(u"SELECT count(*) FROM location"), std::to_string(kThreads * kRounds));
}

TEST(Threads, HaveContextsOfTheirOwn) {
  std::vector<std::unique_ptr<support::ReferenceDatabase>> own;
  std::vector<const support::ReferenceDatabase*> databases;
  for (int i = 0; i < kThreads; ++i) {
    own.push_back(std::make_unique<support::ReferenceDatabase>(support::Contents::Schema));
    databases.push_back(own.back().get());
    AddPeople(*databases.back());
  }
  RunPages(databases);
  for (size_t i = 0; i < own.size(); ++i) {
    EXPECT_EQ(own[i]->Value(u"SELECT count(*) FROM individual_loc WHERE individual_ref = " +
                            NumberText(static_cast<int32_t>(i) + 1)),
              std::to_string(kRounds));
    EXPECT_EQ(own[i]->Value(u"SELECT count(*) FROM individual_loc"), std::to_string(kRounds));
  }
}

}  // namespace
}  // namespace vellum250::server
