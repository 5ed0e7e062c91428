// Shared main of the benchmark programs. Runs the benchmarks as usual, then pairs every
// "<Name>_Ky<rest>" run with each "<Name>_Base<label><rest>" run of the same program
// and prints baseline time / library time, so that a value above 1 means the library
// is faster. Ratios come from one run, so both sides saw the same machine state.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Sample {
  std::string name;
  double time;
  double bytesPerSecond;  // 0 when the run counts no bytes
};

double BytesPerSecond(const benchmark::BenchmarkReporter::Run& run) {
  auto found = run.counters.find("bytes_per_second");
  return found == run.counters.end() ? 0 : static_cast<double>(found->second);
}

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs)
      if (run.run_type == Run::RT_Iteration && !run.error_occurred)
        samples_.push_back({run.benchmark_name(), run.GetAdjustedCPUTime(), BytesPerSecond(run)});
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nRatios (baseline time / kybase time; above 1 means kybase is faster; where both\n"
                "sides count bytes, also kybase bytes per second / baseline bytes per second):\n");
    for (const Sample& ours : samples_) {
      std::size_t at = ours.name.find("_Ky");
      if (at == std::string::npos) continue;
      std::size_t rest = ours.name.find('/', at);
      std::string family = ours.name.substr(0, at);
      std::string tail = rest == std::string::npos ? "" : ours.name.substr(rest);
      for (const Sample& base : samples_) {
        if (base.name.compare(0, family.size() + 5, family + "_Base") != 0) continue;
        std::size_t baseRest = base.name.find('/', family.size());
        std::string baseTail = baseRest == std::string::npos ? "" : base.name.substr(baseRest);
        if (baseTail != tail || ours.time <= 0) continue;
        std::string label = base.name.substr(family.size() + 5,
                                             (baseRest == std::string::npos ? base.name.size() : baseRest) -
                                                 family.size() - 5);
        if (!label.empty() && label[0] == '_') label.erase(0, 1);
        std::printf("  %-40s vs %-24s %7.2f", ours.name.c_str(), label.empty() ? "baseline" : label.c_str(),
                    base.time / ours.time);
        if (ours.bytesPerSecond > 0 && base.bytesPerSecond > 0)
          std::printf("   bytes/s %7.2f (%.0f MB/s against %.0f MB/s)", ours.bytesPerSecond / base.bytesPerSecond,
                      ours.bytesPerSecond / 1e6, base.bytesPerSecond / 1e6);
        std::printf("\n");
      }
    }
  }

 private:
  std::vector<Sample> samples_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
