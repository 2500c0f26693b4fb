#include "platform/qtkit/MovieFormats.h"

namespace kelvo {
namespace {

constexpr MovieFormat formats[] = {
    {"mov,mp4,m4a,3gp,3g2,mj2",
     u"mov 'MooV' qt mp4 m4v 'M4V ' m4a 'M4A ' m4b 'M4B ' m4r 3gp 3g2 mj2 f4v f4a"},
    {"avi", u"avi 'VfW ' divx"},
    {"matroska,webm", u"mkv mka mk3d webm"},
    {"mpeg", u"mpg mpeg 'MPEG' mpe vob"},
    {"mpegts", u"ts mts m2ts m2t"},
    {"mpegvideo", u"m1v m2v"},
    {"asf", u"wmv wma asf"},
    {"flv", u"flv"},
    {"swf", u"swf"},
    {"ogg", u"ogv ogg oga ogx opus spx"},
    {"mp3", u"mp3 'MPG3' mp2 mpa"},
    {"aac", u"aac adts"},
    {"wav", u"wav 'WAVE'"},
    {"w64", u"w64"},
    {"aiff", u"aif aiff 'AIFF' aifc 'AIFC'"},
    {"au", u"au snd 'ULAW'"},
    {"caf", u"caf 'caff'"},
    {"flac", u"flac"},
    {"amr", u"amr"},
    {"ac3", u"ac3"},
    {"eac3", u"eac3 ec3"},
    {"dts", u"dts"},
    {"truehd", u"thd"},
    {"dv", u"dv dif 'dvc!'"},
    {"mxf", u"mxf"},
    {"gxf", u"gxf"},
    {"rm", u"rm rmvb ra ram"},
    {"flic", u"flc fli 'FLI '"},
    {"gif", u"gif 'GIFf'"},
    {"h264", u"h264 264"},
    {"hevc", u"hevc h265 265"},
    {"m4v", u""},
    {"obu", u"obu"},
    {"ivf", u"ivf"},
    {"nut", u"nut"},
    {"nsv", u"nsv"},
    {"yuv4mpegpipe", u"y4m"},
    {"film_cpk", u"cpk"},
    {"smjpeg", u"mjpg"},
    {"ape", u"ape"},
    {"wv", u"wv"},
    {"tta", u"tta"},
    {"mpc", u"mpc"},
    {"mpc8", u""},
    {"dsf", u"dsf"},
    {"voc", u"voc"},
    {"tak", u"tak"},
};

} // namespace

std::span<const MovieFormat> movieFormats() {
    return formats;
}

} // namespace kelvo
