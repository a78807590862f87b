// solve and solutions: the deduction solver as the Solve menu runs it, and the exact
// solution count that the deduction cannot give.
#include "cli/cli_support.h"
#include "cli/commands.h"
#include "commands/solving_commands.h"
#include "core/text_rules.h"
#include "solver/candidates.h"
#include "solver/solution_search.h"
#include "solver/solve_driver.h"
#include "solver/technique_table.h"

namespace qm::cli {

namespace {

Json StepJson(const SolveStep& step) {
  return {{"line", Cp1252ToUtf8(step.line)},
          {"text", Cp1252ToUtf8(step.text)},
          {"shown", Cp1252ToUtf8(StepStatusText(step))},
          {"target", step.target},
          {"second", step.second},
          {"row", step.row},
          {"col", step.col}};
}

int RunSolve(Output& output, bool explain, PuzzleModel& model, HeadlessPort& port) {
  AutoSolveResult result;
  RunControl run(model, port);
  if (explain) {
    // Every pause is answered at once.
    port.onProcessEvents = [&run] { run.Continue(); };
    result = PacedAutoSolve(model, run);
  } else {
    result = AutoSolve(model, run);
  }

  Json techniques = Json::object();
  for (const SweepTechnique& technique : kSweepOrder) {
    const auto t = static_cast<std::size_t>(explain ? technique.explained : technique.quiet);
    techniques[std::string(kTechniqueNames[t])] = result.solve.changes[t];
  }
  if (output.json) {
    Json out = {{"status", result.solve.status},
                {"sweeps", result.solve.sweeps},
                {"message", Cp1252ToUtf8(result.solve.message)},
                {"outcome", result.outcome},
                {"snapshot", Cp1252ToUtf8(SaveCandidates(model))},
                {"positions", TextsJson(model, model.PosText)}};
    if (explain) {
      Json steps = Json::array();
      for (const SolveStep& step : port.steps) steps.push_back(StepJson(step));
      out["steps"] = std::move(steps);
    }
    out["techniques"] = std::move(techniques);
    PrintJson(output, out);
    return kExitOk;
  }
  if (explain) {
    for (const SolveStep& step : port.steps) output.out << Cp1252ToUtf8(StepStatusText(step)) << '\n';
    if (!port.steps.empty()) output.out << '\n';
  }
  output.out << result.outcome << '\n'
             << "Status " << result.solve.status << " after " << result.solve.sweeps << " sweeps"
             << (result.solve.message.empty() ? "" : ": " + Cp1252ToUtf8(result.solve.message)) << "\n\n";
  for (const std::string& line : DrawGrid(model, model.PosText)) output.out << (line.empty() ? "" : "  ") << line << '\n';
  output.out << "\nChanges by technique:";
  for (const auto& [name, changes] : techniques.items()) output.out << ' ' << name << '=' << changes;
  output.out << '\n';
  return kExitOk;
}

int RunSolutions(Output& output, const SearchOptions& options, PuzzleModel& model) {
  const SolutionCount count = CountSolutions(model, options);
  Json first = Json::array();
  for (const std::string& text : count.first) first.push_back(Cp1252ToUtf8(text));
  if (output.json) {
    Json out{{"solutions", count.count}, {"complete", count.complete}, {"first", first}, {"nodes", count.nodes}};
    if (count.timedOut) out["stopped"] = "time limit";
    PrintJson(output, out);
    return kExitOk;
  }
  output.out << (count.complete ? "" : "at least ") << count.count
             << (count.count == 1 ? " solution" : " solutions") << " (" << count.nodes << " search nodes)\n";
  if (count.timedOut) {
    output.out << "The time limit ran out before the search finished: the count is not complete.\n";
  }
  if (count.count > 0) {
    PerPosition<std::string> texts;
    for (std::size_t k = 0; k < count.first.size(); ++k) texts[k] = count.first[k];
    output.out << "\nFirst solution:\n";
    for (const std::string& line : DrawGrid(model, texts)) output.out << (line.empty() ? "" : "  ") << line << '\n';
  }
  return kExitOk;
}

}  // namespace

void RegisterSolveCommands(CLI::App& app, CommandList& commands, bool& json) {
  auto explain = std::make_shared<bool>(false);
  CLI::App* solve = AddPuzzleCommand(
      app, commands, "solve", "Solve the loaded puzzle by deduction, as Solve -> Auto does", json, true,
      [explain](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort& port) {
        return RunSolve(output, *explain, model, port);
      });
  solve->add_flag("--explain", *explain, "Solve with a pause at every change and record each explanation step");

  auto options = std::make_shared<SearchOptions>();
  CLI::App* solutions = AddPuzzleCommand(
      app, commands, "solutions", "Count the solutions of the loaded puzzle by search", json, true,
      [options](Output& output, const PuzzleArgs&, PuzzleModel& model, HeadlessPort&) {
        return RunSolutions(output, *options, model);
      });
  solutions->add_option("--limit", options->limit, "Stop counting at this many solutions (default 2)")
      ->check(CLI::Range(1, 1000000));
  solutions
      ->add_option("--time-limit", options->timeLimitSeconds,
                   "Stop searching after this many seconds; the count is then not complete")
      ->check(FiniteRange(0.001, 86400.0));
}

}  // namespace qm::cli
