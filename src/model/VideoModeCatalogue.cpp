#include "model/VideoModeCatalogue.h"

namespace model {

namespace {
VideoMode mode(const char* name, const char* group, int w, int h, int rate, bool interlaced)
{
    return VideoMode{QString::fromLatin1(name), QString::fromLatin1(group), w, h, rate, interlaced,
                     QStringLiteral("rgba"), rate, 0};
}
}  // namespace

const std::vector<VideoMode>& VideoModeCatalogue::modes()
{
    static const std::vector<VideoMode> all = {
        mode("576i25 RGBA", "SD", 720, 576, kRate25, true),
        mode("480i29.97 RGBA", "SD", 720, 480, kRate2997, true),
        mode("720p23.98 RGBA", "HD 720", 1280, 720, kRate2398, false),
        mode("720p24 RGBA", "HD 720", 1280, 720, kRate24, false),
        mode("720p25 RGBA", "HD 720", 1280, 720, kRate25, false),
        mode("720p29.97 RGBA", "HD 720", 1280, 720, kRate2997, false),
        mode("720p30 RGBA", "HD 720", 1280, 720, kRate30, false),
        mode("720p50 RGBA", "HD 720", 1280, 720, kRate50, false),
        mode("720p59.94 RGBA", "HD 720", 1280, 720, kRate5994, false),
        mode("720p60 RGBA", "HD 720", 1280, 720, kRate60, false),
        mode("1080i25 RGBA", "HD 1080", 1920, 1080, kRate25, true),
        mode("1080i29.97 RGBA", "HD 1080", 1920, 1080, kRate2997, true),
        mode("1080i30 RGBA", "HD 1080", 1920, 1080, kRate30, true),
        mode("1080p23.98 RGBA", "HD 1080", 1920, 1080, kRate2398, false),
        mode("1080p24 RGBA", "HD 1080", 1920, 1080, kRate24, false),
        mode("1080p25 RGBA", "HD 1080", 1920, 1080, kRate25, false),
        mode("1080p29.97 RGBA", "HD 1080", 1920, 1080, kRate2997, false),
        mode("1080p30 RGBA", "HD 1080", 1920, 1080, kRate30, false),
        mode("1080p50 RGBA", "HD 1080", 1920, 1080, kRate50, false),
        mode("1080p59.94 RGBA", "HD 1080", 1920, 1080, kRate5994, false),
        mode("1080p60 RGBA", "HD 1080", 1920, 1080, kRate60, false),
        mode("2160p23.98 RGBA", "UHD", 3840, 2160, kRate2398, false),
        mode("2160p24 RGBA", "UHD", 3840, 2160, kRate24, false),
        mode("2160p25 RGBA", "UHD", 3840, 2160, kRate25, false),
        mode("2160p29.97 RGBA", "UHD", 3840, 2160, kRate2997, false),
        mode("2160p30 RGBA", "UHD", 3840, 2160, kRate30, false),
        mode("2160p50 RGBA", "UHD", 3840, 2160, kRate50, false),
        mode("2160p59.94 RGBA", "UHD", 3840, 2160, kRate5994, false),
        mode("2160p60 RGBA", "UHD", 3840, 2160, kRate60, false),
    };
    return all;
}

const VideoMode* VideoModeCatalogue::modeNamed(const QString& name)
{
    for (const VideoMode& m : modes())
        if (m.name == name) return &m;
    return nullptr;
}

double VideoModeCatalogue::framesPerSecond(int rateCode)
{
    switch (rateCode) {
    case kRate2398: return 24000.0 / 1001.0;
    case kRate24: return 24.0;
    case kRate25: return 25.0;
    case kRate2997: return 30000.0 / 1001.0;
    case kRate30: return 30.0;
    case kRate50: return 50.0;
    case kRate5994: return 60000.0 / 1001.0;
    case kRate60: return 60.0;
    default: return 25.0;
    }
}

int VideoModeCatalogue::ticksPerSecond(int rateCode)
{
    static const int ticks[] = {24, 24, 25, 30, 30, 50, 60, 60};
    return rateCode >= 0 && rateCode < 8 ? ticks[rateCode] : 25;
}

QString VideoModeCatalogue::rateName(int rateCode)
{
    static const char* names[] = {"23.98", "24", "25", "29.97", "30", "50", "59.94", "60"};
    return rateCode >= 0 && rateCode < 8 ? QString::fromLatin1(names[rateCode]) : QString();
}

}  // namespace model
