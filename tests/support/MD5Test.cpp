#include "kalmia/support/MD5.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string DigestOf(const char* text) {
  MD5 digest;
  digest.Update(text);
  digest.Finalize();
  return digest.GetDigest();
}

TEST(MD5, GivesThePublishedDigests) {  // RFC 1321, appendix A.5
  EXPECT_EQ(DigestOf(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(DigestOf("a"), "0cc175b9c0f1b6a831c399e269772661");
  EXPECT_EQ(DigestOf("abc"), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(DigestOf("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(DigestOf("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
  EXPECT_EQ(DigestOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
            "d174ab98d277d9f5a5611c2c9f419d9f");
  EXPECT_EQ(DigestOf("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
            "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(MD5, TakesItsBytesInPieces) {
  MD5 digest;
  digest.Update("message");
  digest.Update(" dig-zero-", 4);
  digest.Update(nullptr);
  digest.Update(nullptr, 0);
  digest.Update("est");
  digest.Finalize();
  EXPECT_EQ(std::string(digest.GetDigest()), DigestOf("message digest"));
}

TEST(MD5, IsEmptyBeforeItIsFinalAndFixedAfterwards) {
  MD5 digest;
  digest.Update("abc");
  EXPECT_STREQ(digest.GetDigest(), "");
  digest.Finalize();
  const std::string made = digest.GetDigest();
  digest.Update("more");
  digest.Finalize();
  EXPECT_EQ(digest.GetDigest(), made);
}

}  // namespace
