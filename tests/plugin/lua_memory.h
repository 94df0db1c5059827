// lua_memory.h: an allocator for a test's Lua state that counts what is live, refuses the request of a test's choice,
// and notices writes past a block's end, such as those of a native function that uses more of Lua's stack than it may.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

class LuaMemory {
public:
    // Refuses the nth request for memory from now on (1: the next), once. 0 refuses none.
    void refuse(unsigned long nth) { refuse_in_ = nth; }
    bool refused() const { return refused_; } // since the last refuse()
    void forget_refusal() { refused_ = false; }

    unsigned long requests() const { return requests_; } // for more memory, refused or not
    std::size_t live_bytes() const { return live_bytes_; }
    int overruns() const { return overruns_; } // blocks that were found written past their end

    // The lua_Alloc; self is the LuaMemory.
    static void *allocate(void *self, void *block, std::size_t old_size, std::size_t new_size) {
        return static_cast<LuaMemory *>(self)->resize(static_cast<unsigned char *>(block), old_size, new_size);
    }

private:
    static constexpr std::size_t guard_size = 64;
    static constexpr unsigned char guard_byte = 0x5C;

    // Always moves. Only growing can fail: Lua relies on that.
    void *resize(unsigned char *block, std::size_t old_size, std::size_t new_size) {
        unsigned char *moved = nullptr;
        if (new_size > 0) {
            if (new_size > old_size) {
                ++requests_;
                if (refuse_in_ > 0 && --refuse_in_ == 0) {
                    refused_ = true;
                    return nullptr;
                }
            }
            moved = static_cast<unsigned char *>(std::malloc(new_size + guard_size));
            if (!moved) return nullptr;
            if (block) std::memcpy(moved, block, old_size < new_size ? old_size : new_size);
            std::memset(moved + new_size, guard_byte, guard_size);
            live_bytes_ += new_size;
        }
        if (block) release(block, old_size);
        return moved;
    }

    void release(unsigned char *block, std::size_t size) {
        for (std::size_t i = 0; i < guard_size; ++i) {
            if (block[size + i] == guard_byte) continue;
            ++overruns_;
            break;
        }
        live_bytes_ -= size;
        std::free(block);
    }

    unsigned long requests_ = 0;
    unsigned long refuse_in_ = 0;
    bool refused_ = false;
    std::size_t live_bytes_ = 0;
    int overruns_ = 0;
};
