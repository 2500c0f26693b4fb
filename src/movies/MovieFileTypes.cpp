#include "movies/MovieFileTypes.h"

#include "collections/MSMutableArrayKelvoExtensions.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/files/NSHFSFileTypes.h"
#include "platform/qtkit/QTMovie.h"
#include "text/NSStringExtensions.h"

namespace kelvo::KelvoQTMovieExtensions {

NSArray QuickTimeFileTypes() {
    static const NSArray kept = [] {
        NSMutableArray types(QTMovie::movieFileTypes(QTIncludeCommonTypes));
        unionWithObjects(
            types, {u"'MPG '", u"mpg",    u"mpeg",   u"m4a",    u"mp4",    u"mp3",    u"m3u",    u"m4p",
                    u"avi",    u"swf",    u"flv",    u"qt",     u"mid",    u"midi",   u"au",     u"wav",
                    u"aif",    u"aiff",   u"3gp",    u"3g2",    u"3gpp",   u"flc",    u"'VfW '", u"m1s",
                    u"MQV",    u"'MPGA'", u"'.WAV'", u"'amr '", u"m75",    u"'cdda'", u"'qhtm'", u"'mpg4'",
                    u"'rtsp'", u"mqv",    u"'hmov'", u"'grip'", u"m1v",    u"m2v",    u"'DIVX'", u"bwf",
                    u"'SMIL'", u"'mxfd'", u"pls",    u"qtpf",   u"cel",    u"'sdp '", u"gsm",    u"dvd",
                    u"'sdv '", u"mpa",    u"qht",    u"'PLAY'", u"'SWFL'", u"'3gp2'", u"'attr'", u"m15",
                    u"'MPG3'", u"'M1V '", u"amr",    u"adts",   u"aac",    u"sdp",    u"'MPGa'", u"'FLI '",
                    u"atr",    u"skin",   u"'MPGx'", u"dif",    u"smil",   u"'adts'", u"m4b",    u"rtsp",
                    u"'3gpp'", u"'SwaT'", u"'amc '", u"3gp2",   u"sdv",    u"'embd'", u"m1a",    u"'caff'",
                    u"swa",    u"mpm",    u"sd2",    u"'dvc!'", u"'MPG2'", u"cdda",   u"'MP3 '", u"'.SMI'",
                    u"'MPGV'", u"smf",    u"'M1A '", u"'GSM '", u"vfw",    u"fli",    u"smi",    u"mpv",
                    u"dv",     u"caf",    u"m2a",    u"kar",    u"'Sd2f'", u"mp2",    u"amc",    u"sml",
                    u"'MPEG'", u"'DAVI'", u"'AIFC'", u"qtz",    u"qhtm",   u"'Midi'", u"'MPGv'", u"m4v"});
        return types.copy();
    }();
    return kept;
}

bool isQuickTimeExtension_type(const NSString& extension, const NSString& type) {
    const NSArray types = QuickTimeFileTypes();
    return containsStringNoCase(types, extension) || containsString(types, type);
}

bool isQuickTimeFile(const NSString& path) {
    return isQuickTimeExtension_type(pathExtension(path), NSHFSTypeOfFile(path));
}

} // namespace kelvo::KelvoQTMovieExtensions
