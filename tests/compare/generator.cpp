// Making programs: settings, what the host does, a text of one of several kinds, perhaps a mistake.
#include "compare/generator.h"

#include <algorithm>
#include <sstream>

#include "compare/host_writer.h"
#include "compare/statement_writer.h"

namespace qumel::compare {

namespace {

constexpr std::uint64_t kSettingsStream = 1ULL << 40;  // apart from the numbers of programs

Settings ChooseSettings(Random& random) {
  Settings settings;
  int const complexity = random.Between(1, 100);
  settings.allowsComplex = complexity > 55;
  settings.forcesComplex = complexity > 88;
  settings.isPrivate = settings.forcesComplex || random.Chance(50);
  if (random.Chance(45)) return settings;
  settings.radixMark = random.Pick({'P', 'P', 'P', 'C'});
  settings.quoteMark = random.Pick({'2', '2', '1'});
  settings.booleanTrue = random.Pick({'C', 'N'});
  settings.angleUnit = random.Pick({'D', 'R', 'R', 'G', 'M'});
  settings.outputBase = random.Pick({'D', 'D', 'D', 'B', 'O', 'T', 'H'});
  settings.coordinateFormat = random.Pick({'R', 'P'});
  settings.defaultScope = random.Pick({'L', 'L', 'G', 'C'});
  settings.precision = random.Pick({12, 12, 0, 3, 17, 30});
  settings.allowsImpliedMultiplication = random.Chance(70);
  settings.invertsIndices = random.Chance(30);
  return settings;
}

// ---- texts ----

/** Words that could make a text endless when they come to stand where they do not belong, or that size
 * arrays. */
bool MayBeEndless(std::string const& token) {
  for (char const* word :
       {"do", "next", "goto", "label", "while", "until", "always", "continue", "roll", "[", "]"})
    if (token == word) return true;
  return false;
}

void WriteExample(Scene& scene, Program& program) {
  std::string const& example = scene.random.PickFrom(scene.forms.examples);
  Pieces words;
  std::istringstream stream(example);
  for (std::string word; stream >> word;) words.push_back({word});
  bool const isFixed =
      example.find('[') != std::string::npos || example.find("roll") != std::string::npos ||
      std::any_of(words.begin(), words.end(), [](Piece const& word) { return MayBeEndless(word.text); });
  if (isFixed) words = {{example, true}};
  program.pieces.insert(program.pieces.end(), words.begin(), words.end());
}

/** Texts long or deep enough for whatever grows. */
void WriteLarge(Scene& scene, Program& program) {
  ExpressionWriter write(scene, program.pieces);
  int const size = scene.random.Between(100, 600);
  bool const isDeep = scene.random.Chance(50);
  for (int i = 0; i < size; ++i) {
    if (isDeep) write.Emit("(");
    write.Write(Type::Number, 0);
    write.Emit(scene.random.Pick({"+", "-", "*"}));
  }
  write.Emit("1");
  if (isDeep) program.pieces.push_back({std::string(static_cast<std::size_t>(size), ')')});
}

void WriteText(Scene& scene, Program& program) {
  Random& random = scene.random;
  constexpr Type kValues[] = {Type::Number, Type::Number, Type::Number, Type::Text, Type::Boolean};
  Type const value = random.PickFrom(kValues);
  if (random.Chance(4)) program.pieces.push_back({random.PickFrom(scene.forms.modeWords) + "; "});
  int const way = random.Between(1, 1000);
  if (way <= 60 && scene.settings.radixMark == 'P' && scene.settings.quoteMark == '2')
    WriteExample(scene, program);
  else if (way <= 63) WriteLarge(scene, program);
  else if (way <= 480) ExpressionWriter(scene, program.pieces).Write(value, random.Between(1, 3));
  else StatementWriter(scene, program.pieces).WriteProgram(random.Between(1, 4), value);
}

// ---- mistakes ----

std::string AnyToken(Scene& scene) {
  Random& random = scene.random;
  Pieces pieces;
  ExpressionWriter write(scene, pieces);
  switch (random.Between(1, 6)) {
    case 1: return write.NumberLiteral();
    case 2: return write.TextLiteral();
    case 3: return random.Pick({"true", "x", "s", "p", "a", "m", "u", "f", "undefined"});
    case 4:
      return random.Pick(
          {"(", ")", ",", ";", ":", "]", "?", "$", "'", "\"", "\\", "#", "@", "0x", "1.2.3", "\xC3\xA4"});
    default: break;
  }
  std::string const token = random.PickFrom(scene.forms.tokens);
  return MayBeEndless(token) ? "+" : token;
}

/** One mistake, in a piece that bounds nothing. */
void Mutate(Scene& scene, Program& program) {
  Random& random = scene.random;
  Pieces& pieces = program.pieces;
  for (int attempt = 0; attempt < 8; ++attempt) {
    std::size_t const place = random.Below(pieces.size());
    if (pieces[place].isFixed) continue;
    auto const at = pieces.begin() + static_cast<std::ptrdiff_t>(place);
    switch (random.Between(1, 6)) {
      case 1: pieces.erase(at); break;
      case 2: pieces.insert(at, Piece(*at)); break;
      case 3:
        if (place + 1 == pieces.size() || pieces[place + 1].isFixed) continue;
        std::swap(pieces[place], pieces[place + 1]);
        break;
      case 4: pieces.insert(at, {AnyToken(scene)}); break;
      case 5:  // a literal loses its quote, a word its last letter
        if (at->text.size() < 2) continue;
        at->text.pop_back();
        break;
      default: at->text = AnyToken(scene); break;
    }
    program.isMutated = true;
    return;
  }
}

}  // namespace

bool SharesContext(std::uint64_t seed, std::uint64_t number) {
  return Random(seed, kSettingsStream + BlockStart(number)).Chance(15);
}

Program GenerateProgram(OperatorForms const& forms, std::uint64_t seed, std::uint64_t number) {
  Program program;
  bool const isShared = SharesContext(seed, number);
  Random random(seed, number);
  Random shared(seed, kSettingsStream + 1 + BlockStart(number));
  program.settings = ChooseSettings(isShared ? shared : random);
  program.startsByHandle = random.Chance(50);

  Settings const& settings = program.settings;
  Scene scene{forms, random, settings, settings.allowsComplex || settings.forcesComplex};
  HostWriter host(scene, program);
  OperatorWriter operators(scene, program);
  host.WriteVariables();
  if (random.Chance(40)) operators.WriteOperators(random.Between(1, 3));
  WriteText(scene, program);
  if (random.Chance(25) && !program.pieces.empty()) Mutate(scene, program);
  for (std::size_t run = 1; run < Program::kRuns; ++run)
    if (random.Chance(60)) host.WriteChanges(run, operators);
  return program;
}

}  // namespace qumel::compare
