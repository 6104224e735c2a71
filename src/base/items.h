// Items: what conversion yields and compilation reads, in the order of postfix text.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qumel {

/** The marks that begin the items of postfix text. */
namespace PostfixMark {
constexpr char kNumber = '#', kName = '@', kString = '$', kOperator = '!', kMarkedOperator = '&', kEnd = ';';
constexpr char kLength = ':';  // ends the length of a string
constexpr char kCount = '.';   // stands before the operand count of an operator
}  // namespace PostfixMark

/** What an item is: the mark that begins it in postfix text. */
enum class EQMItem : char {
  Number = PostfixMark::kNumber,
  Name = PostfixMark::kName,
  String = PostfixMark::kString,
  Operator = PostfixMark::kOperator,
  MarkedOperator = PostfixMark::kMarkedOperator,  // keeps a place among the operands, which stays empty
  End = PostfixMark::kEnd,                        // of a statement
};

/** Characters of the texts of an item list. */
struct SQMStretch {
  std::uint32_t start = 0, length = 0;
};

struct SQMItem {
  constexpr SQMItem(EQMItem itemKind, SQMStretch where) : kind(itemKind), place(where), number(0.0) {}

  EQMItem kind;
  bool isInteger = false;         // of numbers: written without a fraction
  std::int32_t operandCount = 0;  // of operators
  SQMStretch place;  // in the text that the item was read from; empty for what is not written there
  union {
    double number;
    long id;                // of operators
    SQMStretch characters;  // of strings, escapes applied
    void* bound;            // of names: for whoever compiles them
  };
};
static_assert(sizeof(SQMItem) == 24, "an item is to stay small");

/** Whether an item keeps a place among the operands. */
constexpr bool IsOperand(SQMItem const& item) {
  return item.kind != EQMItem::Operator && item.kind != EQMItem::End;
}

/** The items of a text, which must outlive the list. What is cleared keeps its memory. */
class CQMItemList {
 public:
  using Items = std::span<SQMItem const>;

  CQMItemList() = default;
  CQMItemList(CQMItemList&&) = default;
  CQMItemList& operator=(CQMItemList&&) = default;
  /** The same items in as much memory as they need, with a copy of their text. */
  CQMItemList Kept() const;

  /** Begins anew. Throws bad_alloc for a text whose places do not fit into items. */
  void Begin(std::string_view text);
  SQMItem& Add(EQMItem kind, SQMStretch place) { return m_items.emplace_back(kind, place); }
  void Clear() { m_items.clear(); }
  /** Where text stands, which is part of the text of the items. */
  SQMStretch PlaceOf(std::string_view text) const {
    return {static_cast<std::uint32_t>(text.data() - m_text.data()), static_cast<std::uint32_t>(text.size())};
  }
  /** Keeps characters that stand in no text: those added from here on, until they are put into an item. */
  std::vector<char>& Pool() { return m_pool; }
  SQMStretch PooledSince(std::size_t poolSize) const;

  Items GetItems() const { return m_items; }
  std::span<SQMItem> GetItems() { return m_items; }
  std::size_t Capacity() const { return m_items.capacity(); }
  std::size_t Count() const { return m_items.size(); }
  /** As it is written where the item was read. */
  std::string_view Written(SQMItem const& item) const { return At(item.place); }
  /** Of a name or a string. */
  std::string_view Characters(SQMItem const& item) const {
    return At(item.kind == EQMItem::String ? item.characters : item.place);
  }

  /** Appends the postfix text of an item, or of some. */
  void AppendPostfix(SQMItem const& item, std::string& postfix) const;
  void AppendPostfix(Items items, std::string& postfix) const;
  std::string GetPostfix() const;

 private:
  // the pool begins where the text ends
  std::string_view At(SQMStretch stretch) const {
    return stretch.start < m_text.size() ? m_text.substr(stretch.start, stretch.length)
                                         : std::string_view(m_pool.data(), m_pool.size())
                                               .substr(stretch.start - m_text.size(), stretch.length);
  }

  std::vector<SQMItem> m_items;
  std::string_view m_text;
  std::vector<char> m_pool;
  std::unique_ptr<char[]> m_ownText;
};

}  // namespace qumel
