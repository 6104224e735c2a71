// Symbols by name and serial number, chains of tables, deletion, and tables shared by threads.
#include "tables/symbol_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/failing_allocation.h"

namespace qumel {
namespace {

/** A variable as a symbol table sees it. */
class Variable : public CQMLinkedObject {
 public:
  explicit Variable(char const* name, EQMDataType type = EQMDataType::Number) : m_type(type) {
    SetObjectName(name);
  }
  ~Variable() override {
    if (s_log != nullptr) *s_log += Name();
  }
  EQMDataType m_type;
  double m_value = 0.0;
  static std::string* s_log;
};
std::string* Variable::s_log = nullptr;

constexpr SQMVariableTraits kVariables = {
    [](char const* name, EQMDataType type) -> CQMObject* {
      return type == EQMDataType::Undefined ? nullptr : new Variable(name, type);
    },
    [](CQMObject& variable, void const* value) {
      static_cast<Variable&>(variable).m_value = *static_cast<double const*>(value);
    },
    [](CQMObject const& object) { return static_cast<Variable const&>(object).m_type; },
};

/** A chain of three tables. */
class SymbolTable : public ::testing::Test {
 protected:
  SymbolTable() {
    m_parent.SetParentObject(&m_grandparent);
    m_table.SetParentObject(&m_parent);
  }
  static Variable* Enter(CQMSymbolTable& table, char const* name) {
    auto* const variable = new Variable(name);
    EXPECT_EQ(table.AddSymbol(variable), Error::None);
    return variable;
  }
  CQMSymbolTable m_grandparent{&kVariables, true}, m_parent{&kVariables}, m_table{&kVariables};
};

/** What a table holds, in the order in which it was entered. */
struct Entry {
  std::string name;  // may be another now
  Variable* symbol;
};

TEST_F(SymbolTable, FollowsAPlainListOfEachTable) {
  CQMSymbolTable* const tables[] = {&m_table, &m_parent, &m_grandparent};
  std::vector<Entry> models[3];
  std::mt19937 random(4);
  auto const below = [&random](std::size_t bound) { return random() % bound; };
  auto const first = [&](std::size_t t, auto fits) {
    auto const found = std::ranges::find_if(models[t], fits);
    return found != models[t].end() ? &*found : nullptr;
  };
  for (int step = 0; step < 10'000; ++step) {
    std::size_t const t = below(3);
    CQMSymbolTable& table = *tables[t];
    std::vector<Entry>& model = models[t];
    // few names, so that some tables know one twice; short and long ones
    std::string const name = std::string(below(2) * 12, 'n') + std::to_string(below(15));
    auto const isNamed = [&name](Entry const& entry) { return entry.name == name; };
    Entry const* const known = first(t, isNamed);
    switch (below(8)) {
      case 0:
      case 1: {
        auto* const symbol = new Variable(name.c_str());
        ASSERT_EQ(table.AddSymbol(symbol), Error::None);
        ASSERT_EQ(table.AddSymbol(symbol), Error::None) << "it is in already";
        model.push_back({name, symbol});
        break;
      }
      case 2: {
        auto symbol = std::make_unique<Variable>(name.c_str());
        bool const isTaken = known != nullptr && !known->symbol->IsMarkedForDeletion();
        ASSERT_EQ(table.AddNewSymbol(*symbol), isTaken ? Error::AlreadyExists : Error::None);
        if (!isTaken) model.push_back({name, symbol.release()});
        break;
      }
      case 3:
        if (!model.empty()) model[below(model.size())].symbol->SetObjectName("another");
        break;
      case 4:
        if (known != nullptr) known->symbol->DeleteOnRefCountZero(below(3) == 0);
        break;
      default: {
        bool const byNumber = below(2) == 0 && !model.empty();
        Entry const* const target = byNumber ? &model[below(model.size())] : known;
        bool const isThere = target != nullptr && !target->symbol->IsMarkedForDeletion();
        long const expected = isThere ? Error::None : Error::NotFound;
        if (isThere && below(4) == 0) {  // in use
          target->symbol->ReserveRef();
          ASSERT_EQ(table.DeleteSymbol(target->symbol->GetSerialNumber(), true), Error::VariableInUse);
          target->symbol->ReleaseRef();
        }
        ASSERT_EQ(byNumber ? table.DeleteSymbol(target->symbol->GetSerialNumber(), true)
                           : table.DeleteSymbol(name, true),
                  expected);
        if (isThere) model.erase(model.begin() + (target - model.data()));
      }
    }
    ASSERT_EQ(table.GetSymbolCount(), static_cast<long>(model.size()));
    Entry const* found = nullptr;  // along the chain
    for (std::size_t i = 3; i-- > 0;) {
      Entry const* const own = first(i, isNamed);
      if (own != nullptr) found = own;
      bool const isVisible = own != nullptr && !own->symbol->IsMarkedForDeletion();
      ASSERT_EQ(tables[i]->GetSymbol(name, true), isVisible ? own->symbol : nullptr);
      ASSERT_EQ(tables[i]->IsSymbol(name, true), own != nullptr);
      // a marked symbol hides those of the tables above
      bool const isFound = found != nullptr && !found->symbol->IsMarkedForDeletion();
      ASSERT_EQ(tables[i]->GetSymbol(name, false), isFound ? found->symbol : nullptr);
      ASSERT_EQ(tables[i]->GetSymbolType(name, false),
                isFound ? EQMDataType::Number : EQMDataType::Undefined);
      ASSERT_EQ(tables[i]->IsSymbol(name, false), found != nullptr);
      long const number = found != nullptr ? found->symbol->GetSerialNumber() : 0;
      ASSERT_EQ(tables[i]->IsSymbol(number, false), found != nullptr);
    }
  }
}

TEST_F(SymbolTable, GivesOutReferencesAndWhatItHeld) {
  Variable* const symbol = Enter(m_parent, "x");
  EXPECT_FALSE(m_table.IsSymbol("X", false)) << "case counts";
  EXPECT_EQ(m_table.DeleteSymbol("x", true), Error::NotFound);
  EXPECT_EQ(m_table.ReserveSymbol("x", false), symbol);
  EXPECT_EQ(symbol->GetRefCount(), 1);
  symbol->ReleaseRef();
  std::unique_ptr<CQMObject> taken;
  EXPECT_EQ(m_parent.TakeSymbol("x", taken), Error::None);
  EXPECT_EQ(taken.get(), symbol);
  EXPECT_EQ(m_table.AddSymbol(nullptr), Error::None);
  CQMLinkedObject root;
  m_grandparent.SetParentObject(&root);
  EXPECT_FALSE(m_table.IsSymbol("x", false)) << "a parent of another class ends the chain";
  m_grandparent.SetParentObject(nullptr);
}

TEST_F(SymbolTable, MakesVariables) {
  double const value = 2.5;
  struct Case {
    char const* what;
    std::string name;
    EQMDataType type;
    void const* value;
    long code;
  };
  Enter(m_grandparent, "taken");
  Case const cases[] = {
      {"a value", "a", EQMDataType::Number, &value, Error::None},
      {"no value", "b", EQMDataType::Complex, nullptr, Error::None},
      {"the longest name", std::string(128, 'n'), EQMDataType::Number, nullptr, Error::None},
      {"a name too long", std::string(129, 'n'), EQMDataType::Number, nullptr, Error::Overflow},
      {"twice", "a", EQMDataType::Number, &value, Error::AlreadyExists},
      {"known on the chain", "taken", EQMDataType::Number, &value, Error::AlreadyExists},
      {"no variable made", "c", EQMDataType::Undefined, nullptr, Error::OutOfMemory},
  };
  for (Case const& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(m_table.AddVariableSymbol(c.name.c_str(), c.type, c.value), c.code);
    if (c.code != Error::None) continue;
    EXPECT_EQ(m_table.GetSymbolType(c.name, true), c.type);
    EXPECT_EQ(static_cast<Variable*>(m_table.GetSymbol(c.name, true))->m_value,
              c.value != nullptr ? value : 0.0);
  }
  EXPECT_EQ(m_table.GetSymbolCount(), 3);
  EXPECT_FALSE(m_table.IsSymbol("", false)) << "a name too long is not stored empty";
  EXPECT_EQ(m_table.AddConstantSymbol("k", EQMDataType::Number, &value), Error::None);
  EXPECT_FALSE(m_table.IsSymbol("k", false));
  CQMSymbolTable texts;
  EXPECT_EQ(texts.AddVariableSymbol("a", EQMDataType::Number, nullptr), Error::InvocationFailed);
}

TEST_F(SymbolTable, DestroysWhatItHoldsFromTheLastRowToTheFirst) {
  std::string log;
  Variable::s_log = &log;
  {
    CQMSymbolTable table(&kVariables);
    for (char const* name : {"a", "b", "c", "d"}) Enter(table, name);
    EXPECT_EQ(table.DeleteSymbol("b", true), Error::None);
  }
  Variable::s_log = nullptr;
  EXPECT_EQ(log, "bdca");
}

TEST_F(SymbolTable, StaysWholeWhenMemoryRunsOut) {
  Enter(m_table, "first");
  long failures = 0;
  for (long spared = 0;; ++spared) {
    auto variable = std::make_unique<Variable>("a name that does not fit into a short string");
    long code = Error::None;
    {
      testing::FailingAllocation const failing(spared);
      code = m_table.AddSymbol(variable.get());
    }
    if (code == Error::None) {
      EXPECT_EQ(m_table.GetSymbol(variable->Name(), true), variable.get());
      EXPECT_EQ(m_table.GetSymbol(variable->GetSerialNumber(), true), variable.get());
      variable.release();
      break;
    }
    ++failures;
    EXPECT_EQ(code, Error::OutOfMemory);
    EXPECT_FALSE(m_table.IsSymbol(variable->Name(), true));
    EXPECT_FALSE(m_table.IsSymbol(variable->GetSerialNumber(), true));
    EXPECT_EQ(m_table.GetSymbolCount(), 1);
  }
  EXPECT_GT(failures, 1);
}

TEST_F(SymbolTable, LookupsBetweenDeletionsSortNothing) {
  auto const name = [](int i) { return "symbol" + std::to_string(i); };
  auto const bytesOf = [&](int symbols) {
    testing::CountedAllocations const counted;
    CQMSymbolTable table(&kVariables);
    for (int i = 0; i < symbols; ++i) Enter(table, name(i).c_str());
    for (int i = 0; i < symbols; i += 2) {  // lookups between deletions, from both ends of the table
      EXPECT_EQ(table.DeleteSymbol(name(i), true), Error::None);
      EXPECT_FALSE(table.IsSymbol(name(i), true));
      EXPECT_EQ(table.GetSymbol(name(symbols - 1 - i), true) != nullptr, (symbols - 1 - i) % 2 == 1);
    }
    EXPECT_EQ(table.GetSymbolCount(), symbols / 2);
    return counted.Bytes();
  };
  constexpr int kSymbols = 5'000;
  EXPECT_LT(bytesOf(4 * kSymbols), 5 * bytesOf(kSymbols)) << "a sort takes room for all rows";
}

TEST_F(SymbolTable, ThreadsLookUpWhileOneChangesASharedTable) {
  constexpr int kTurns = 2000;
  std::atomic<bool> done{false};
  std::atomic<long> found{0};
  Enter(m_grandparent, "stays");
  std::vector<std::thread> readers;
  for (int reader = 0; reader < 2; ++reader) {
    readers.emplace_back([&] {
      CQMSymbolTable own(&kVariables);
      own.SetParentObject(&m_grandparent);
      while (!done) {
        if (CQMObject* const symbol = own.ReserveSymbol("comes", false); symbol != nullptr) {
          if (symbol->Name() == "comes") ++found;
          symbol->ReleaseRef();
        }
        EXPECT_TRUE(own.IsSymbol("stays", false));
        std::this_thread::yield();
      }
    });
  }
  long refused = 0;
  for (int turn = 0; turn < kTurns || found == 0; ++turn) {
    ASSERT_EQ(m_grandparent.AddVariableSymbol("comes", EQMDataType::Number, nullptr), Error::None);
    while (m_grandparent.DeleteSymbol("comes", true) == Error::VariableInUse) ++refused;
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_FALSE(m_grandparent.IsSymbol("comes", true));
  EXPECT_EQ(m_grandparent.GetSymbolCount(), 1);
  RecordProperty("found", std::to_string(found));
  RecordProperty("refused", std::to_string(refused));
}

TEST_F(SymbolTable, OfThreadsThatMakeOneNameOneIsFirst) {
  for (int turn = 0; turn < 200; ++turn) {
    CQMSymbolTable shared(&kVariables, true);
    long codes[2];
    auto const add = [&](int i) { codes[i] = shared.AddVariableSymbol("x", EQMDataType::Number, nullptr); };
    std::thread other(add, 1);
    add(0);
    other.join();
    ASSERT_EQ(codes[0] + codes[1], Error::AlreadyExists);
    ASSERT_EQ(shared.GetSymbolCount(), 1);
  }
}

}  // namespace
}  // namespace qumel
