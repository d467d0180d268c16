// The command that brings a merge source to its segment.
#include "render/conversion_commands.h"

#include <cmath>

#include "core/helpers.h"

namespace render {

std::string SilenceArgs(bool bHasAudio)
{
    if (bHasAudio) {
        return "";
    }
    return core::StrPrintf("-f lavfi -t %.6f -i anullsrc=channel_layout=stereo:sample_rate=44100 "
                           "-shortest ",
                           kSilenceSeconds);
}

std::string ConvertInputCommand(const EncodeArgs &args,
                                const std::string &workFile,
                                const std::string &silence,
                                const std::string &chain,
                                const std::string &target,
                                int frames)
{
    std::string rate = "fps=" + args.r_frame_rate;
    if (frames > 0) {
        rate += core::StrPrintf(",trim=end_frame=%d", frames);
    }
    return args.prefix +
           core::StrPrintf("-i \"%s\" %s-c:v %s -pix_fmt yuv420p -g %d -keyint_min 1 -r %s "
                           "-c:a aac -b:a 192k -vf \"%s,%s,setpts=PTS-STARTPTS,setsar=1\" "
                           "-af \"asetpts=PTS-STARTPTS\" -movflags +faststart \"%s\"",
                           workFile.c_str(),
                           silence.c_str(),
                           args.encoderText.c_str(),
                           static_cast<int>(std::lround(args.fps)),
                           args.r_frame_rate.c_str(),
                           chain.c_str(),
                           rate.c_str(),
                           target.c_str());
}

} // namespace render
