#include <benchmark/benchmark.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <array>
#include <cstdint>

#include "LogClient.h"
#include "protocol/VelProtocolBase.h"

namespace {

using google::protobuf::io::CodedInputStream;
using google::protobuf::io::CodedOutputStream;

/// Lengths that take 1, 2, 3, 4 and 5 bytes, in turn.
constexpr std::array<std::uint32_t, 5> kLengths = {37, 300, 70'000, 3'000'000, 0xFFFFFFF0};

class Codec : public VelProtocolBase {
 public:
    Codec() : VelProtocolBase({}, -1) { LogClient::Instance()->Level(0); }
    e_MsgReturn HandleMessage() override { return MSG_CONTINUE; }
};

void EncodePrefix(benchmark::State& state) {
    Codec codec;
    auto length = static_cast<int>(kLengths.at(static_cast<std::size_t>(state.range(0)) - 1));
    char buffer[5] = {};
    for (auto _ : state) {
        benchmark::DoNotOptimize(length);
        benchmark::DoNotOptimize(codec.Write7BitEncodedInt(buffer, length));
        benchmark::ClobberMemory();
    }
}

void EncodePrefixByProtobuf(benchmark::State& state) {
    std::uint32_t length = kLengths.at(static_cast<std::size_t>(state.range(0)) - 1);
    std::uint8_t buffer[5] = {};
    for (auto _ : state) {
        benchmark::DoNotOptimize(length);
        google::protobuf::io::ArrayOutputStream array(buffer, sizeof buffer);
        CodedOutputStream stream(&array);
        stream.WriteVarint32(length);
        benchmark::DoNotOptimize(stream.ByteCount());
        benchmark::ClobberMemory();
    }
}

/// A static function of the class that is part of the caller's code: no stream, no call.
void EncodePrefixByProtobufInline(benchmark::State& state) {
    std::uint32_t length = kLengths.at(static_cast<std::size_t>(state.range(0)) - 1);
    std::uint8_t buffer[5] = {};
    for (auto _ : state) {
        benchmark::DoNotOptimize(length);
        benchmark::DoNotOptimize(CodedOutputStream::WriteVarint32ToArray(length, buffer));
        benchmark::ClobberMemory();
    }
}

void DecodePrefix(benchmark::State& state) {
    Codec codec;
    char buffer[5] = {};
    codec.Write7BitEncodedInt(buffer,
                              static_cast<int>(kLengths.at(static_cast<std::size_t>(state.range(0)) - 1)));
    for (auto _ : state) {
        int count = 0;
        benchmark::DoNotOptimize(codec.Read7BitEncodedInt(buffer, &count));
        benchmark::DoNotOptimize(count);
        benchmark::ClobberMemory();
    }
}

void DecodePrefixByProtobuf(benchmark::State& state) {
    std::uint8_t buffer[5] = {};
    CodedOutputStream::WriteVarint32ToArray(kLengths.at(static_cast<std::size_t>(state.range(0)) - 1),
                                            buffer);
    for (auto _ : state) {
        CodedInputStream stream(buffer, sizeof buffer);
        std::uint32_t length = 0;
        benchmark::DoNotOptimize(stream.ReadVarint32(&length));
        benchmark::DoNotOptimize(length);
        benchmark::DoNotOptimize(stream.CurrentPosition());
        benchmark::ClobberMemory();
    }
}

BENCHMARK(EncodePrefix)->DenseRange(1, 5);
BENCHMARK(EncodePrefixByProtobuf)->DenseRange(1, 5);
BENCHMARK(EncodePrefixByProtobufInline)->DenseRange(1, 5);
BENCHMARK(DecodePrefix)->DenseRange(1, 5);
BENCHMARK(DecodePrefixByProtobuf)->DenseRange(1, 5);

}  // namespace
