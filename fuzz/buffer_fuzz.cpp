// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "zynaggr/zyndatabufex.h"
#include "zynaggr/zynerror.h"

#include <string>

// The input is a program of reads and the data that they are made on, in memory of the caller. A plain
// reading of the data says what each has to find.

namespace {

// What stands at a position of the data, for as far as it is there.
class Plain {
public:
    explicit Plain(std::string_view data) : m_data(data) {}

    bool Has(std::int64_t count) const {
        return position >= 0 && count >= 0 && position + count <= static_cast<std::int64_t>(m_data.size());
    }
    std::string_view Take(std::int64_t count) {
        const std::string_view bytes =
            m_data.substr(static_cast<std::size_t>(position), static_cast<std::size_t>(count));
        position += count;
        return bytes;
    }
    std::int32_t TakeCount() {
        const std::string_view bytes = Take(4);
        std::uint32_t count = 0;
        for (int i = 3; i >= 0; --i)
            count = count * 256 + static_cast<unsigned char>(bytes[static_cast<std::size_t>(i)]);
        return static_cast<std::int32_t>(count);
    }
    // A count and so many units; false when they are not covered by the data, empty for a count of 0.
    bool TakeRecord(std::string& text, int unit) {
        text.clear();
        if (!Has(4)) return false;
        lastCount = TakeCount();
        const std::int64_t count = lastCount;
        if (count < 0 || !Has(count * unit)) return false;
        text = Take(count * unit);
        return true;
    }

    std::int64_t position = 0;
    std::int32_t lastCount = 0;

private:
    std::string_view m_data;
};

std::string UpToZero(const std::string& text) {
    return text.c_str();
}

void Step(CzynDataBufEx& buffer, Plain& plain, Input& input) {
    char bytes[16];
    std::string expected;
    CStringA text;
    const std::int32_t number = input.Number();
    switch (input.Below(8)) {
    case 0:
        buffer.SetCurPos(number);
        plain.position = number;
        break;
    case 1: {
        int value = 7;
        const bool has = plain.Has(4);
        Check(buffer.Read(&value) == has && value == (has ? plain.TakeCount() : 0));
        break;
    }
    case 2: {
        const int count = std::min(number, 16);
        const bool has = count > 0 && plain.Has(count);
        Check(buffer.Read(bytes, count) == has);
        if (has) Check(std::string_view(bytes, static_cast<std::size_t>(count)) == plain.Take(count));
        break;
    }
    case 3: {
        const void* const at = buffer.GetCurBuffer(number);
        Check((at != nullptr) == plain.Has(number));
        if (at && number > 0) Check(*static_cast<const char*>(at) == plain.Take(number)[0]);
        break;
    }
    case 4: {
        buffer.m_bStoreAnsi = number % 2 == 0;
        const bool has = plain.TakeRecord(expected, buffer.m_bStoreAnsi ? 1 : 2);
        Check(buffer.ReadStrBuf(text) == has);
        if (buffer.m_bStoreAnsi) Check(text.View() == UpToZero(expected));
        break;
    }
    case 5: {
        const bool has = plain.TakeRecord(expected, 1);
        const int result = buffer.ReadStrBuf_TCHAR_r(text);
        Check(result == (has ? static_cast<int>(expected.size()) : -1) && text.View() == UpToZero(expected));
        break;
    }
    case 6: {
        const bool isCounted = plain.Has(4), has = plain.TakeRecord(expected, 1);
        Check(buffer.Utf8StringReadFromIterator(text) == (has || !isCounted));
        if (!has) Check(text.IsEmpty());
        // It moves over what there is.
        const auto end = static_cast<std::int64_t>(buffer.m_nSize);
        if (!isCounted && plain.position >= 0) plain.position = std::max(plain.position, end);
        if (isCounted && !has && plain.lastCount > 0) plain.position = end;
        break;
    }
    default: {
        std::string rest;
        if (plain.Has(1)) rest = plain.Take(static_cast<std::int64_t>(buffer.m_nSize - plain.position));
        Check(buffer.ReadString(text) == !rest.empty());
        Check(rest.starts_with(text.View()));
        plain.position = buffer.GetCurPos(); // behind the line end
        Check(rest.empty() || buffer.GetCurPos() > 0);
    }
    }
    Check(buffer.GetCurPos() == static_cast<std::int32_t>(plain.position));
}

// Records are written and read back, in the buffer's own memory and at its iterator.
void WriteAndRead(CzynDataBufEx& buffer, Input input) {
    const std::string text(input.Text());
    CStringA record(text.c_str()), read;
    buffer.m_bStoreAnsi = input.Below(2) == 0;
    buffer.AddStrBuf(record);
    Check(buffer.ReadStrBuf(read) && read == record);
    const int start = buffer.GetCurPos();
    const auto iterator = [&] { return buffer.SetCurPos(start), start; };
    Check(buffer.AddStrBuf_TCHAR_2Iterator(record) == iterator() + 5 + record.GetLength());
    Check(buffer.ReadStrBuf_TCHAR_(read) == record.GetLength() + 1 && read == record);
    iterator();
    Check(buffer.Utf8StringAdd2Iterator(record));
    iterator();
    Check(buffer.Utf8StringReadFromIterator(read) && read == record);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string_view program = input.Take(32), bytes = input.Rest();
    const auto memory = Exactly(bytes);
    CzynDataBufEx buffer, own;
    buffer.SetExternalData(memory.get(), static_cast<int>(bytes.size()));
    Plain plain(bytes);
    for (Input steps(reinterpret_cast<const std::uint8_t*>(program.data()), program.size());
         !steps.IsEmpty();)
        Step(buffer, plain, steps);
    WriteAndRead(own, {data, size});
    return 0;
}
