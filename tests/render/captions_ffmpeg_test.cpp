// Tests of the captions as the finished film shows them: texts drawn as typed (braces, line
// ends), Japanese characters drawn with the font that the set-up installs, and captions on a
// picture of fewer than 270 lines.
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "render/render_project.h"
#include "support/test_support.h"

namespace {

using rendertest::RenderProject;

// The gray picture of the film at half a second, one byte per pixel.
std::string FilmFrame(const std::string &film)
{
    testsupport::RunResult r = testsupport::RunProgram({"ffmpeg",
                                                        "-v",
                                                        "error",
                                                        "-ss",
                                                        "0.5",
                                                        "-i",
                                                        film,
                                                        "-frames:v",
                                                        "1",
                                                        "-pix_fmt",
                                                        "gray",
                                                        "-f",
                                                        "rawvideo",
                                                        "-"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return r.out;
}

// Pixels of two pictures of one size that differ clearly (more than the encoder's noise).
int ClearlyDifferentPixels(const std::string &a, const std::string &b)
{
    EXPECT_EQ(a.size(), b.size());
    int count = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
        count += std::abs(static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i])) > 48;
    }
    return count;
}

// A film of one scene of 2 s on a 160x120 clip, with the title text over its first second.
class TitledFilm
{
public:
    TitledFilm()
        : m_project(2)
    {
        m_project.AddScene(0, 49);
        m_project.rig.data.capWatermark.caption.clear();
        m_project.rig.data.capTitle.capTime_first = 0;
        m_project.rig.data.capTitle.capTime_second = 1;
    }

    // The film's picture at half a second with title as the title text (empty: none).
    std::string FrameWithTitle(const std::string &title)
    {
        m_project.rig.data.capTitle.caption = title;
        EXPECT_EQ(m_project.Render(), 0);
        return FilmFrame(m_project.Output());
    }

private:
    RenderProject m_project;
};

// Enough changed pixels for a few letters of the 32-pixel title font.
constexpr int kLetters = 150;

TEST(CaptionsFilm, TitleOnAPictureUnderTwoHundredSeventyLinesIsDrawn)
{
    TitledFilm film;
    const std::string none = film.FrameWithTitle("");
    EXPECT_GT(ClearlyDifferentPixels(film.FrameWithTitle("Garden"), none), kLetters);
}

TEST(CaptionsFilm, BracesAreDrawnAsTypedNotReadAsOverrideCodes)
{
    TitledFilm film;
    const std::string braced = film.FrameWithTitle("{Fox} at dusk");
    // Read as an override block, "{Fox}" would vanish and leave " at dusk".
    EXPECT_GT(ClearlyDifferentPixels(braced, film.FrameWithTitle(" at dusk")), kLetters);
    EXPECT_GT(ClearlyDifferentPixels(braced, film.FrameWithTitle("at dusk")), kLetters);
    // Read as an override, "{\fs200}" would draw the letter over the whole picture.
    const std::string small = film.FrameWithTitle("{\\fs200}x");
    const std::string none = film.FrameWithTitle("");
    EXPECT_LT(ClearlyDifferentPixels(small, none), 160 * 120 / 4);
}

TEST(CaptionsFilm, SecondLineOfACaptionIsDrawn)
{
    TitledFilm film;
    EXPECT_GT(
        ClearlyDifferentPixels(film.FrameWithTitle("first\nsecond"), film.FrameWithTitle("first")),
        kLetters);
}

TEST(CaptionsFilm, JapaneseCaptionsAreDrawnAsCharactersNotBoxes)
{
    TitledFilm film;
    const std::string none = film.FrameWithTitle("");
    const std::string nihongo = film.FrameWithTitle("日本語");
    EXPECT_GT(ClearlyDifferentPixels(nihongo, none), kLetters);
    // Without a Japanese font both texts would be three equal boxes.
    EXPECT_GT(ClearlyDifferentPixels(nihongo, film.FrameWithTitle("字幕語")), kLetters);
}

} // namespace
