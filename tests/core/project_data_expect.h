// Test helpers for project data: field-by-field comparison and a workspace with every field set.
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/tarnwick_data.h"

namespace testsupport {

using core::CapParam;
using core::CTarnwickData;
using core::ParamRange;
using core::SceneEntry;
using core::VideoInfo;

inline void ExpectSameParam(const ParamRange &a, const ParamRange &b, const char *name)
{
    SCOPED_TRACE(name);
    EXPECT_EQ(a.dValue, b.dValue);
    EXPECT_EQ(a.dMin, b.dMin);
    EXPECT_EQ(a.dMax, b.dMax);
    EXPECT_EQ(a.dStep, b.dStep);
    EXPECT_EQ(a.strText, b.strText);
    EXPECT_EQ(a.nType, b.nType);
}

inline void ExpectSameCaption(const CapParam &a, const CapParam &b, const std::string &name)
{
    SCOPED_TRACE(name);
    EXPECT_EQ(a.capTime_first, b.capTime_first);
    EXPECT_EQ(a.capTime_second, b.capTime_second);
    EXPECT_EQ(a.caption, b.caption);
    EXPECT_EQ(a.cap_pos_type, b.cap_pos_type);
    EXPECT_EQ(a.font_name, b.font_name);
    EXPECT_EQ(a.font_size, b.font_size);
    EXPECT_EQ(a.color, b.color);
    EXPECT_EQ(a.bold, b.bold);
    EXPECT_EQ(a.italic, b.italic);
    EXPECT_EQ(a.underline, b.underline);
    EXPECT_EQ(a.strike_uut, b.strike_uut);
    EXPECT_EQ(a.encoding, b.encoding);
    EXPECT_EQ(a.outline, b.outline);
}

inline void ExpectSameVideo(const VideoInfo &a, const VideoInfo &b, const std::string &name)
{
    SCOPED_TRACE(name);
    EXPECT_EQ(a.r_frame_rate, b.r_frame_rate);
    EXPECT_EQ(a.fps, b.fps);
    EXPECT_EQ(a.frame_num, b.frame_num);
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    EXPECT_EQ(a.rotation, b.rotation);
    EXPECT_EQ(a.start_frame, b.start_frame);
    EXPECT_EQ(a.field_order, b.field_order);
    EXPECT_EQ(a.sar_num, b.sar_num);
    EXPECT_EQ(a.sar_den, b.sar_den);
    EXPECT_EQ(a.bHasAudio, b.bHasAudio);
}

inline void ExpectSameScene(const SceneEntry &a, const SceneEntry &b, size_t i)
{
    std::string name = "scene " + std::to_string(i);
    SCOPED_TRACE(name);
    EXPECT_EQ(a.bAnalyzed, b.bAnalyzed);
    EXPECT_EQ(a.bEnable, b.bEnable);
    EXPECT_EQ(a.framNo_first, b.framNo_first);
    EXPECT_EQ(a.framNo_second, b.framNo_second);
    EXPECT_EQ(a.strOriginalFile, b.strOriginalFile);
    EXPECT_EQ(a.strWorkFile, b.strWorkFile);
    EXPECT_EQ(a.fileName, b.fileName);
    ExpectSameCaption(a.capParam, b.capParam, name + " capParam");
    ExpectSameVideo(a.viIn, b.viIn, name + " viIn");
    ExpectSameVideo(a.viOut, b.viOut, name + " viOut");
}

// Every field, persisted or not.
inline void ExpectSameData(const CTarnwickData &a, const CTarnwickData &b)
{
    EXPECT_EQ(a.project_file, b.project_file);
    EXPECT_EQ(a.input_file, b.input_file);
    EXPECT_EQ(a.input_mp4_file, b.input_mp4_file);
    EXPECT_EQ(a.output_folder, b.output_folder);
    EXPECT_EQ(a.output_name, b.output_name);
    EXPECT_EQ(a.pts_file, b.pts_file);
    ASSERT_EQ(a.diff_list.size(), b.diff_list.size());
    for (size_t i = 0; i < a.diff_list.size(); ++i) {
        ExpectSameScene(a.diff_list[i], b.diff_list[i], i);
    }
    EXPECT_EQ(a.cine_sco, b.cine_sco);
    EXPECT_EQ(a.transition, b.transition);
    EXPECT_EQ(a.primaries, b.primaries);
    ExpectSameParam(a.threshold, b.threshold, "threshold");
    ExpectSameParam(a.brightness, b.brightness, "brightness");
    ExpectSameParam(a.saturation, b.saturation, "saturation");
    ExpectSameParam(a.contrast, b.contrast, "contrast");
    ExpectSameParam(a.gamma, b.gamma, "gamma");
    ExpectSameParam(a.valid_min_unit, b.valid_min_unit, "valid_min_unit");
    ExpectSameParam(a.cut_min_unit, b.cut_min_unit, "cut_min_unit");
    EXPECT_EQ(a.bUseCuda, b.bUseCuda);
    EXPECT_EQ(a.bAutoSave, b.bAutoSave);
    EXPECT_EQ(a.bReopenLast, b.bReopenLast);
    EXPECT_EQ(a.rcMainWindow.left, b.rcMainWindow.left);
    EXPECT_EQ(a.rcMainWindow.top, b.rcMainWindow.top);
    EXPECT_EQ(a.rcMainWindow.right, b.rcMainWindow.right);
    EXPECT_EQ(a.rcMainWindow.bottom, b.rcMainWindow.bottom);
    EXPECT_EQ(a.play_scene_loop, b.play_scene_loop);
    EXPECT_EQ(a.play_loop, b.play_loop);
    EXPECT_EQ(a.list_idx, b.list_idx);
    EXPECT_EQ(a.nListSubItem, b.nListSubItem);
    ExpectSameVideo(a.viCurrent, b.viCurrent, "viCurrent");
    ExpectSameVideo(a.viInput, b.viInput, "viInput");
    ExpectSameVideo(a.viSource, b.viSource, "viSource");
    EXPECT_EQ(a.play_vol, b.play_vol);
    EXPECT_EQ(a.nEncodePreset, b.nEncodePreset);
    ExpectSameCaption(a.capWatermark, b.capWatermark, "capWatermark");
    ExpectSameCaption(a.capTitle, b.capTitle, "capTitle");
    EXPECT_EQ(a.pts_list, b.pts_list);
    EXPECT_EQ(a.dTransitionSec, b.dTransitionSec);
    EXPECT_EQ(a.dMeanU, b.dMeanU);
    EXPECT_EQ(a.dMeanV, b.dMeanV);
}

inline VideoInfo MakeVideo(int width)
{
    VideoInfo vi;
    vi.r_frame_rate = "30000/1001";
    vi.fps = 30000.0 / 1001.0;
    vi.frame_num = 900;
    vi.width = width;
    vi.height = 1080;
    vi.rotation = 90;
    vi.start_frame = 3;
    vi.field_order = "tt";
    vi.sar_num = 4;
    vi.sar_den = 3;
    vi.bHasAudio = true;
    return vi;
}

// A workspace with a value other than the default in every field.
inline void FillRichData(CTarnwickData &d)
{
    d.project_file = "/projects/rich.twproj";
    d.input_file = "/videos/rich.mov";
    d.input_mp4_file = "/videos/rich.mov_out/rich.mp4";
    d.output_folder = "/videos/rich.mov_out/";
    d.output_name = "rich_trim.mp4";
    d.pts_file = "/videos/rich.mov_out/rich_pts.csv";
    for (int i = 0; i < 3; ++i) {
        SceneEntry entry(i * 100, i * 100 + 49, "/videos/rich.mov_out/seg" + std::to_string(i));
        entry.bEnable = i != 1;
        entry.strOriginalFile = "orig" + std::to_string(i);
        entry.strWorkFile = "work" + std::to_string(i);
        entry.SetCaption(i + 0.5, i + 2.25, "シーン" + std::to_string(i) + " 猫が通る");
        entry.capParam.color = 0x00FF00FF;
        entry.viIn = MakeVideo(1000 + i);
        entry.viOut = MakeVideo(2000 + i);
        d.diff_list.push_back(entry);
    }
    d.cine_sco = 1;
    d.transition = 1;
    d.primaries = 1;
    d.threshold.dValue = 250;
    d.threshold.strText = "250";
    d.brightness.dValue = -0.25;
    d.brightness.strText = "-0.25";
    d.saturation.dValue = 1.5;
    d.saturation.strText = "1.5";
    d.contrast.dValue = 1.25;
    d.contrast.strText = "1.25";
    d.gamma.dValue = 0.8;
    d.gamma.strText = "0.8";
    d.valid_min_unit.dValue = 2.5;
    d.valid_min_unit.strText = "2.5";
    d.cut_min_unit.dValue = 3.75;
    d.cut_min_unit.strText = "3.75";
    d.bUseCuda = 1;
    d.bAutoSave = 1;
    d.bReopenLast = 1;
    d.rcMainWindow = {10, 20, 810, 620};
    d.play_scene_loop = 1;
    d.play_loop = 1;
    d.list_idx = 2;
    d.nListSubItem = 3;
    d.viCurrent = MakeVideo(640);
    d.viInput = MakeVideo(1920);
    d.viSource = MakeVideo(1280);
    d.play_vol = 9;
    d.nEncodePreset = 2;
    d.capWatermark.caption = "透かし";
    d.capWatermark.color = 0x80FFFFFF;
    d.capTitle.caption = "{\\fad(500,500)}旅の記録";
    d.capTitle.italic = 1;
    d.pts_list = {0.0, 0.033367, 0.066733};
    d.dTransitionSec = 1.25;
    d.dMeanU = 1.5;
    d.dMeanV = -2.5;
}

} // namespace testsupport
