#include <benchmark/benchmark.h>
#include <wx/init.h>

#include <clocale>

// Runs the benches with the windowless library, in the locale that the program sets.
int main(int argc, char** argv) {
    if (std::setlocale(LC_CTYPE, "") == nullptr || MB_CUR_MAX == 1) {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
    const wxInitializer library;
    benchmark::Initialize(&argc, argv);
    if (!library.IsOk() || benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
