// count_operations.cpp: prints, as JSON, the instructions of each operation and of its floor on the emulated board.
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <malloc.h>

#include "instruction_counter.h"
#include "measurement.h"
#include "sizes.h"

namespace {

using namespace bench;

// Longer than the counter's 24 bits. Without the emulator's options it counts something else.
void check_counter() {
    constexpr std::uint32_t length = 30'000'000;
    const std::uint64_t start = instructions_counted();
    execute_instructions(length);
    const std::uint64_t counted = instructions_counted() - start;
    std::printf("{\"loop\": %lu, \"counted\": %lu}\n", static_cast<unsigned long>(length),
                static_cast<unsigned long>(counted));
    if (counted >= length && counted < length + 100) return;
    std::fprintf(stderr, "the counter does not count instructions: EMULATOR_OPTIONS=\"-icount shift=5,sleep=off\"\n");
    std::exit(1);
}

extern "C" unsigned char heap_start[], heap_end[]; // the linker's

std::size_t heap_in_use() { return static_cast<std::size_t>(mallinfo().uordblks); }

// bytes: of the model alone.
void print_heap(Size size, std::size_t bytes) {
    std::printf("{\"heap\": %lu, \"heap_size\": %lu, \"controls\": %d, \"depth\": %d}\n",
                static_cast<unsigned long>(bytes), static_cast<unsigned long>(heap_end - heap_start), size.controls,
                size.depth);
}

// Where records lie decides which slots of a hash table they take, and how the allocator finds room: models are made
// several times, at other places each time, and the smaller the more often.
int places_of(Size size) {
    if (size.controls <= 10) return 24;
    if (size.controls <= 100) return 8;
    return size.controls <= 1000 ? 4 : 1;
}

// Leaves holes in the heap, others for each place. Returns the blocks between them.
std::vector<std::vector<char>> make_holes(int place) {
    std::vector<std::vector<char>> blocks;
    for (int i = 0; i < 300; ++i) blocks.emplace_back(static_cast<std::size_t>(16 + i * (place + 1) * 37 % 240));
    for (int i = 0; i < 300; ++i)
        if (i * (place + 5) % 7 < 3) blocks[static_cast<std::size_t>(i)] = {};
    return blocks;
}

int calls_of(const Operation &operation) { return operation.grows ? 2 : 8; }

bool is_counted(const Operation &operation, Size size) { return operation.grows || size == standard_size; }

void count(SampleModel &sample, const Operation &operation, Reading &sum) {
    Measurement measurement(sample, operation);
    const int calls = calls_of(operation);
    measurement.measure(instructions_counted, calls); // strings are made, lists are as long as they will be
    const Reading reading = measurement.measure(instructions_counted, calls);
    sum.total += reading.total;
    sum.floor += reading.floor;
}

void print(const Operation &operation, Size size, const Reading &sum) {
    const int calls = calls_of(operation) * places_of(size);
    const auto per_call = [calls](std::int64_t counted) { return static_cast<long>((counted + calls / 2) / calls); };
    std::printf("{\"operation\": \"%s\", \"controls\": %d, \"depth\": %d, \"total\": %ld, \"floor\": %ld}\n",
                operation.name, size.controls, size.depth, per_call(sum.total), per_call(sum.floor));
}

void count_all(Size size) {
    const auto operations = all_operations();
    std::vector<Reading> sums(operations.size());
    for (int place = 0; place < places_of(size); ++place) {
        const auto blocks_between_holes = make_holes(place);
        const std::size_t before = heap_in_use();
        SampleModel sample = start_sample(size);
        if (size == largest_size) print_heap(size, heap_in_use() - before);
        for (std::size_t i = 0; i < operations.size(); ++i)
            if (is_counted(operations[i], size)) count(sample, operations[i], sums[i]);
    }
    for (std::size_t i = 0; i < operations.size(); ++i)
        if (is_counted(operations[i], size)) print(operations[i], size, sums[i]);
    std::fflush(stdout);
}

} // namespace

int main() {
    start_instruction_counter();
    check_counter();
    for (const Size size : all_sizes) count_all(size);
    return 0;
}
