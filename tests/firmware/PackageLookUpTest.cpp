// The package look-up as the check boxes and file-name boxes run it: which file a kind finds,
// which files it refuses and the texts it shows for each.
#include <sys/stat.h>
#include <unistd.h>

#include "tests/firmware/FwFixture.h"

namespace {

using PackageLookUp = FwTest;

TEST_F(PackageLookUp, NamesMatchWithoutRegardToCaseAndTheSuffixMayStandAnywhere) {
    writeFile("qm-t77k_isp_V2.BIN.bak", 10);
    writeFile("QM-T77K_AUDIO_v1.img", 10);  // no ".bin" anywhere
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "qm-t77k_isp_V2.BIN.bak");
    EXPECT_EQ(std::string(gFwFullPath[kFwIsp]), (package / "qm-t77k_isp_V2.BIN.bak").string());
    EXPECT_TRUE(consoleHas("> - PATH = " + (package / "qm-t77k_isp_V2.BIN.bak").string() + " \n> - ISP 檔案檢查正確\n"));

    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_AUDIO", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "AUDIO file is not found (1)");
    EXPECT_STREQ(gFwFullPath[kFwAudio], "");
}

TEST_F(PackageLookUp, SubFoldersAreSkippedAndTheFirstListedFileWins) {
    std::filesystem::create_directories(package / "QM-T77K_ISP_a_folder.bin");
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (1)");

    writeFile("QM-T77K_ISP_b.bin", 1);
    writeFile("QM-T77K_ISP_c.bin", 2);
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "0"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "QM-T77K_ISP_b.bin");
}

TEST_F(PackageLookUp, TheUsbImageMustBeExactly128KB) {
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_USB", "1"));
    for (size_t size : {131071u, 131073u, 0u}) {
        writeFile("QM-T77K_USB_x.bin", size);
        ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_USB"), EVENT_RIGHT_CLICK));
        EXPECT_EQ(read("PET77K.FW_FILE_USB"), "USB file size is invalid") << size;
    }
    EXPECT_FALSE(consoleHas("> - PATH"));  // a refused size never gets as far as the path
    EXPECT_TRUE(consoleHas("> - USB 檔案大小異常\n"));
    writeFile("QM-T77K_USB_x.bin", 131072);
    ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_USB"), EVENT_RIGHT_CLICK));
    EXPECT_EQ(read("PET77K.FW_FILE_USB"), "QM-T77K_USB_x.bin");
    EXPECT_TRUE(consoleHas("> - USB 檔案檢查正確\n"));
}

TEST_F(PackageLookUp, EmptyIspAndAudioImagesPass) {
    writeFile("QM-T77K_ISP_empty.bin", 0);
    writeFile("QM-T77K_AUDIO_empty.bin", 0);
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_AUDIO", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "QM-T77K_ISP_empty.bin");
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "QM-T77K_AUDIO_empty.bin");
}

TEST_F(PackageLookUp, AMissingFolderOrAFolderThatIsAFileFindsNothing) {
    for (const char *box : {"PET77K.FW_FILE_CHECK_BOX_ISP", "PET77K.FW_FILE_CHECK_BOX_USB",
                            "PET77K.FW_FILE_CHECK_BOX_AUDIO"})
        ASSERT_TRUE(userSet(box, "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (1)");
    EXPECT_EQ(read("PET77K.FW_FILE_USB"), "USB file is not found (1)");
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "AUDIO file is not found (1)");
    for (int kind : {kFwIsp, kFwUsb, kFwAudio}) EXPECT_STREQ(gFwFullPath[kind], "") << kind;
    // The browsing callbacks keep quiet about a missing package.
    EXPECT_FALSE(consoleHas("檔案"));

    std::FILE *f = std::fopen(package.c_str(), "w");
    ASSERT_TRUE(f);
    std::fclose(f);
    ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_ISP"), EVENT_RIGHT_CLICK));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (1)");
}

TEST_F(PackageLookUp, AFileThatVanishedOrCannotBeOpenedIsNamedAsSuch) {
    // A name whose file is gone by the time it is checked: a link to nowhere.
    std::filesystem::create_directories(package);
    std::filesystem::create_symlink(dir / "nowhere.bin", package / "QM-T77K_ISP_gone.bin");
    std::filesystem::create_symlink(dir / "nowhere.bin", package / "QM-T77K_AUDIO_gone.bin");
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_AUDIO", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (2)");
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "AUDIO file is not found (2)");
    EXPECT_TRUE(consoleHas("> - ISP 檔案不存在\n"));
    EXPECT_FALSE(consoleHas("> - AUDIO 檔案不存在\n"));

    // A pipe carrying an image's name must neither be read nor block the tool.
    std::filesystem::remove(package / "QM-T77K_ISP_gone.bin");
    ASSERT_EQ(mkfifo((package / "QM-T77K_ISP_pipe.bin").c_str(), 0644), 0);
    ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_ISP"), EVENT_RIGHT_CLICK));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file can not be opened");
    EXPECT_TRUE(consoleHas("> - ISP 檔案開啟錯誤\n"));
}

TEST_F(PackageLookUp, AnUnreadableFileCannotBeOpened) {
    if (geteuid() == 0) GTEST_SKIP() << "file permissions do not stop root";
    writeFile("QM-T77K_AUDIO_locked.bin", 100);
    chmod((package / "QM-T77K_AUDIO_locked.bin").c_str(), 0);
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_AUDIO", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_AUDIO"), "AUDIO file can not be opened");
    EXPECT_TRUE(consoleHas("> - AUDIO 檔案開啟錯誤\n"));
}

TEST_F(PackageLookUp, PathsBeyond1023CharactersAreRefusedNotCut) {
    // A folder nested deep enough that the package folder still fits but no image path does.
    std::filesystem::path deep = dir;
    while (deep.string().size() < 1023 - 19 - 60) deep /= std::string(60, 'd');
    SetFwPackageBaseDir(deep.c_str());
    package = deep / "QM-T77K_FW_Update";
    writeFile("QM-T77K_ISP_" + std::string(60, 'v') + ".bin", 10);
    ASSERT_GT((package / ("QM-T77K_ISP_" + std::string(60, 'v') + ".bin")).string().size(), 1023u);
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (2)");
    EXPECT_STREQ(gFwFullPath[kFwIsp], "");

    // A program folder too deep to name leaves no package folder at all.
    const std::string tooDeep = deep.string() + "/" + std::string(100, 'x');
    SetFwPackageBaseDir(tooDeep.c_str());
    ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_ISP"), EVENT_RIGHT_CLICK));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "ISP file is not found (1)");
}

TEST_F(PackageLookUp, AnUntickedKindIsNeitherLookedUpNorShown) {
    writePackage(1000, 0, 0);
    ASSERT_TRUE(vcc::ui::headless::deliver(target("PET77K.FW_FILE_ISP"), EVENT_RIGHT_CLICK));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "File Name");
    EXPECT_FALSE(consoleHas("> - PATH"));
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "1"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "QM-T77K_ISP_I77K300.bin");
    ASSERT_TRUE(userSet("PET77K.FW_FILE_CHECK_BOX_ISP", "0"));
    EXPECT_EQ(read("PET77K.FW_FILE_ISP"), "File Name");
    // The recorded path outlives the box's text: the update looks it up again anyway.
    EXPECT_EQ(std::string(gFwFullPath[kFwIsp]), image("ISP").string());
}

}  // namespace
