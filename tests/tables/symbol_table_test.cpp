// Symbols by name and serial number, chains of tables, deletion, and tables shared by threads.
#include "tables/symbol_table.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
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

TEST_F(SymbolTable, LooksAlongTheChainByNameAndBySerialNumber) {
  Enter(m_parent, "unrelated");
  CQMObject* const far = Enter(m_grandparent, "x");
  long const serial = far->GetSerialNumber();
  EXPECT_EQ(m_table.GetSymbol("x", false), far);
  EXPECT_EQ(m_table.GetSymbol(serial, false), far);
  EXPECT_EQ(m_table.GetSymbolType("x", false), EQMDataType::Number);
  EXPECT_EQ(m_table.GetSymbolType(serial, false), EQMDataType::Number);
  EXPECT_TRUE(m_table.IsSymbol("x", false));
  EXPECT_TRUE(m_table.IsSymbol(serial, false));
  EXPECT_EQ(m_table.GetSymbol("x", true), nullptr);
  EXPECT_EQ(m_table.GetSymbol(serial, true), nullptr);
  EXPECT_FALSE(m_table.IsSymbol("x", true));
  EXPECT_FALSE(m_table.IsSymbol(serial, true));
  EXPECT_EQ(m_table.GetSymbolType("x", true), EQMDataType::Undefined);
  EXPECT_FALSE(m_table.IsSymbol("X", false)) << "case counts";
  CQMObject* const near = Enter(m_table, "x");
  EXPECT_EQ(m_table.GetSymbol("x", false), near);
  EXPECT_EQ(m_parent.GetSymbol("x", false), far);
}

TEST_F(SymbolTable, AParentOfAnotherClassEndsTheChain) {
  CQMLinkedObject root;
  m_grandparent.SetParentObject(&root);
  EXPECT_FALSE(m_table.IsSymbol("x", false));
  m_grandparent.SetParentObject(nullptr);
}

TEST_F(SymbolTable, OfEqualNamesTheFirstEnteredCounts) {
  Variable* const symbols[] = {Enter(m_table, "x"), Enter(m_table, "y"), Enter(m_table, "x"),
                               Enter(m_table, "x")};
  EXPECT_EQ(m_table.GetSymbol("x", true), symbols[0]);
  EXPECT_EQ(m_table.DeleteSymbol(symbols[2]->GetSerialNumber(), true), Error::None);
  EXPECT_EQ(m_table.GetSymbol("x", true), symbols[0]);
  EXPECT_EQ(m_table.DeleteSymbol("x", true), Error::None);
  EXPECT_EQ(m_table.GetSymbol("x", true), symbols[3]);
  EXPECT_EQ(m_table.GetSymbol(symbols[3]->GetSerialNumber(), true), symbols[3]);
  EXPECT_EQ(m_table.DeleteSymbol("x", true), Error::None);
  EXPECT_FALSE(m_table.IsSymbol("x", true));
  EXPECT_EQ(m_table.GetSymbolCount(), 1);
}

TEST_F(SymbolTable, ARenamedObjectIsKnownByTheNameItWasEnteredUnder) {
  Variable* const symbol = Enter(m_table, "before");
  symbol->SetObjectName("after");
  EXPECT_TRUE(m_table.IsSymbol("before", true));
  EXPECT_FALSE(m_table.IsSymbol("after", true));
  EXPECT_EQ(m_table.DeleteSymbol(symbol->GetSerialNumber(), true), Error::None);
  EXPECT_FALSE(m_table.IsSymbol("before", true));
}

TEST_F(SymbolTable, AMarkedSymbolIsHiddenAndStillBlocksItsName) {
  Enter(m_parent, "x");
  Variable* const marked = Enter(m_table, "x");
  marked->DeleteOnRefCountZero(true);
  EXPECT_EQ(m_table.GetSymbol("x", false), nullptr) << "the search must not go on to the parent";
  EXPECT_EQ(m_table.ReserveSymbol("x", false), nullptr);
  EXPECT_EQ(m_table.GetSymbolType("x", false), EQMDataType::Undefined);
  EXPECT_TRUE(m_table.IsSymbol("x", true));
  EXPECT_EQ(m_table.DeleteSymbol("x", true), Error::NotFound);
  EXPECT_EQ(m_table.AddVariableSymbol("x", EQMDataType::Number, nullptr), Error::AlreadyExists);
  marked->DeleteOnRefCountZero(false);
  EXPECT_EQ(m_table.GetSymbol("x", false), marked);
}

TEST_F(SymbolTable, DeletesUnreferencedSymbolsOfItsOwn) {
  Enter(m_parent, "x");
  EXPECT_EQ(m_table.DeleteSymbol("x", true), Error::NotFound);
  EXPECT_EQ(m_parent.ReserveSymbol("x", true), m_parent.GetSymbol("x", true));
  EXPECT_EQ(m_parent.DeleteSymbol("x", true), Error::VariableInUse);
  EXPECT_TRUE(m_parent.IsSymbol("x", true));
  CQMObject* const kept = m_parent.GetSymbol("x", true);
  kept->ReleaseRef();
  EXPECT_EQ(m_parent.DeleteSymbol("x", false), Error::None);
  EXPECT_FALSE(m_parent.IsSymbol("x", true));
  EXPECT_EQ(kept->Name(), "x") << "the caller's now";
  delete kept;
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

TEST_F(SymbolTable, IgnoresNullAndWhatItHoldsAlready) {
  EXPECT_EQ(m_table.AddSymbol(nullptr), Error::None);
  Variable* const symbol = Enter(m_table, "x");
  EXPECT_EQ(m_table.AddSymbol(symbol), Error::None);
  EXPECT_EQ(m_table.GetSymbolCount(), 1);
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

TEST_F(SymbolTable, SymbolsThatComeAndGoTakeNoMemoryForGood) {
  Variable* const kept[] = {Enter(m_table, "a"), Enter(m_table, "b"), Enter(m_table, "a")};
  long const size = CQMLinkedObject::GetDataSpaceSize();
  for (int turn = 0; turn < 50'000; ++turn) {
    Enter(m_table, "comes");
    if (turn % 500 == 250) Enter(m_table, "goes late");
    ASSERT_EQ(m_table.DeleteSymbol("comes", true), Error::None);
    if (turn % 1000 == 999) {
      ASSERT_EQ(m_table.DeleteSymbol("goes late", true), Error::None);
      ASSERT_EQ(m_table.DeleteSymbol("goes late", true), Error::None);
    }
  }
  EXPECT_LT(CQMLinkedObject::GetDataSpaceSize(), size + 500'000);
  EXPECT_EQ(m_table.GetSymbolCount(), 3);
  EXPECT_EQ(m_table.GetSymbol("a", true), kept[0]);
  EXPECT_EQ(m_table.GetSymbol(kept[2]->GetSerialNumber(), true), kept[2]);
  EXPECT_EQ(m_table.DeleteSymbol("a", true), Error::None);
  EXPECT_EQ(m_table.GetSymbol("a", true), kept[2]);
  EXPECT_EQ(m_table.GetSymbol("b", true), kept[1]);
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
