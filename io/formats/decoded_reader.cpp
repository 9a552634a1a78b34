#include "io/formats/decoded_reader.h"

#include <condition_variable>
#include <list>
#include <mutex>

#include "corvane/core/memory_budget.h"

namespace corvane::io {
namespace {

/// The decoded frames of the process, the most recently used first.
class DecodedFrames {
public:
    std::shared_ptr<const DecodedSamples> Find(const DecodedReader* owner)
    {
        const std::lock_guard lock(mutex_);
        for (auto frame = frames_.begin(); frame != frames_.end(); ++frame) {
            if (frame->owner == owner) {
                frames_.splice(frames_.begin(), frames_, frame);
                return frame->samples;
            }
        }
        return nullptr;
    }

    void Add(const DecodedReader* owner, std::shared_ptr<const DecodedSamples> samples)
    {
        const std::lock_guard lock(mutex_);
        bytes_ += Bytes(*samples);
        frames_.push_front({owner, std::move(samples)});
        while (bytes_ > DecodedReader::MostBytes() && frames_.size() > 1) {
            bytes_ -= Bytes(*frames_.back().samples);
            frames_.pop_back();
        }
    }

    void Drop(const DecodedReader* owner)
    {
        const std::lock_guard lock(mutex_);
        frames_.remove_if([&](const Frame& frame) {
            bytes_ -= frame.owner == owner ? Bytes(*frame.samples) : 0;
            return frame.owner == owner;
        });
    }

private:
    struct Frame {
        const DecodedReader* owner;
        std::shared_ptr<const DecodedSamples> samples;
    };

    static std::uint64_t Bytes(const DecodedSamples& samples)
    {
        return samples.size() * sizeof(DecodedSamples::value_type);
    }

    std::mutex mutex_;
    std::list<Frame> frames_;
    std::uint64_t bytes_ = 0;
};

/// Threads take turns to decode: as many at a time as take no more than decoded frames may, one at least.
class DecodingTurn {
public:
    explicit DecodingTurn(std::uint64_t bytes) : bytes_(bytes)
    {
        std::unique_lock lock(Turns().mutex);
        Turns().changed.wait(
            lock, [&] { return Turns().bytes == 0 || Turns().bytes + bytes_ <= DecodedReader::MostBytes(); });
        Turns().bytes += bytes_;
    }
    ~DecodingTurn()
    {
        const std::lock_guard lock(Turns().mutex);
        Turns().bytes -= bytes_;
        Turns().changed.notify_all();
    }
    DecodingTurn(const DecodingTurn&) = delete;
    DecodingTurn& operator=(const DecodingTurn&) = delete;

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::uint64_t bytes = 0; ///< of those that decode
    };

    static State& Turns()
    {
        static State state;
        return state;
    }

    std::uint64_t bytes_;
};

DecodedFrames& Frames()
{
    static DecodedFrames frames;
    return frames;
}

} // namespace

DecodedReader::~DecodedReader()
{
    Frames().Drop(this);
}

std::uint64_t DecodedReader::MostBytes()
{
    return MemoryBudget() / 4;
}

void DecodedReader::Close()
{
    Frames().Drop(this);
}

std::shared_ptr<const DecodedSamples> DecodedReader::Decoded()
{
    if (auto samples = Frames().Find(this)) {
        return samples;
    }
    const auto count = static_cast<std::uint64_t>(Width()) * static_cast<std::uint64_t>(Height()) *
                       static_cast<std::uint64_t>(Planes());
    const DecodingTurn turn(2 * count * sizeof(DecodedSamples::value_type)); // those of the library, and our own
    auto samples = std::make_shared<const DecodedSamples>(Decode());
    Frames().Add(this, samples);
    return samples;
}

void DecodedReader::Read(int plane, int firstRow, int rowCount, float* samples)
{
    const auto decoded = Decoded();
    const auto planes = static_cast<std::size_t>(Planes());
    const auto width = static_cast<std::size_t>(Width());
    const std::uint16_t* from = decoded->data() + static_cast<std::size_t>(firstRow) * width * planes + plane;
    for (std::size_t i = 0; i < width * static_cast<std::size_t>(rowCount); ++i) {
        samples[i] = from[i * planes];
    }
}

} // namespace corvane::io
