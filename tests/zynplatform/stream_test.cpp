// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/stream.h"

using namespace zynplatform;

TEST(StreamTest, TextIsTranslatedWhereverTheBufferEnds) {
    const TempFolder folder;
    std::mt19937 random(1);
    for (const std::size_t length : {0u, 1u, 2u, 16383u, 16384u, 16385u, 50000u}) {
        std::string bytes(length, '\0');
        for (char& c : bytes)
            c = "\r\na"[random() % 3];
        folder.Write("f", bytes);
        const std::string translated = std::regex_replace(bytes, std::regex("\r\n"), "\n");
        for (const std::size_t step : {1u, 7u, 60000u})
            for (const bool isText : {true, false}) {
                Stream stream;
                ASSERT_EQ(0u, stream.Open(folder.Path("f"), {.text = isText}));
                std::string all, part(step, '\0');
                while (const std::size_t done = stream.Read(part.data(), step))
                    all.append(part, 0, done);
                EXPECT_EQ(isText ? translated : bytes, all) << length << ' ' << step;
            }
        Stream lines;
        lines.Open(folder.Path("f"), {.text = true});
        std::string all, line;
        while (lines.ReadLine(line, 100000)) {
            EXPECT_EQ(line.find('\n'), line.find('\n') == line.npos ? line.npos : line.size() - 1);
            all += line;
            line.clear();
        }
        EXPECT_EQ(translated, all);
    }
}

// Reads, writes, seeks and cuts at random, against a string that does the same.
TEST(StreamTest, ReadingAndWritingAlternateFreely) {
    const TempFolder folder;
    folder.Write("f", "");
    Stream stream;
    ASSERT_EQ(0u, stream.Open(folder.Path("f"), {.start = Stream::Start::read, .update = true}));
    std::string model;
    std::size_t position = 0;
    std::mt19937 random(2);
    for (int step = 0; step < 3000; ++step) {
        const std::size_t size = random() % (step % 50 ? 300 : 40000);
        std::string bytes(size, static_cast<char>('a' + step % 26));
        const auto way = random() % 5;
        if (way < 2) {
            EXPECT_TRUE(stream.Write(bytes.data(), size));
            if (size != 0 && position > model.size()) model.resize(position);
            model.replace(std::min(position, model.size()), size, bytes);
            position += size;
        } else if (way == 2) {
            bytes.resize(stream.Read(bytes.data(), size));
            ASSERT_EQ(position < model.size() ? model.substr(position, size) : "", bytes) << step;
            position += bytes.size();
        } else if (way == 3) {
            position = model.empty() ? 0 : random() % (model.size() + 10);
            const auto to = static_cast<std::int64_t>(position);
            EXPECT_EQ(to, stream.Seek(to, SeekFrom::begin));
        } else if (step % 7 == 0) {
            EXPECT_TRUE(stream.SetLength(static_cast<std::int64_t>(size)));
            model.resize(size);
        }
        ASSERT_EQ(static_cast<std::int64_t>(position), stream.GetPosition()) << step;
    }
    EXPECT_TRUE(stream.Close());
    EXPECT_EQ(model, folder.Read("f"));
}
