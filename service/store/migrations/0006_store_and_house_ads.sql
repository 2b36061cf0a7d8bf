-- The payment sandbox. The catalogue: consumable products, and the price of each per currency in minor units
-- (cents; fils for the dinars of Kuwait and Jordan, which have three digits).
CREATE TABLE store_products (
    id      TEXT PRIMARY KEY,
    title   TEXT NOT NULL,
    credits BIGINT NOT NULL,
    skips   BIGINT NOT NULL
);

CREATE TABLE store_prices (
    product_id TEXT NOT NULL REFERENCES store_products (id),
    currency   TEXT NOT NULL,
    amount     BIGINT NOT NULL CHECK (amount > 0),
    PRIMARY KEY (product_id, currency)
);

-- Each player's sandbox switch ('purchase', 'fail' or 'cancel') and the number of his latest transaction. The
-- row is locked while a payment opens or a restore runs, so that both hold between instances.
CREATE TABLE store_players (
    player_id TEXT PRIMARY KEY REFERENCES players (id),
    seq       BIGINT NOT NULL,
    sandbox   TEXT NOT NULL
);

-- state: 'purchasing' (on the payment sheet), 'purchased', 'failed' or 'restored'. Only a purchasing one
-- changes state, and finished goes from 0 to 1 once. seq numbers a player's transactions in their order.
CREATE TABLE store_transactions (
    id            TEXT PRIMARY KEY,
    player_id     TEXT NOT NULL REFERENCES players (id),
    seq           BIGINT NOT NULL,
    product_id    TEXT NOT NULL REFERENCES store_products (id),
    quantity      INTEGER NOT NULL,
    state         TEXT NOT NULL,
    original_id   TEXT REFERENCES store_transactions (id),
    error_code    INTEGER,
    error_message TEXT,
    finished      INTEGER NOT NULL,
    created_at    BIGINT NOT NULL,
    updated_at    BIGINT NOT NULL
);
CREATE UNIQUE INDEX store_transactions_order ON store_transactions (player_id, seq);
CREATE INDEX store_transactions_open ON store_transactions (player_id, state, finished);

INSERT INTO store_products (id, title, credits, skips) VALUES
    ('com.molvane.tarvolin.pack1', 'كيس الذهب', 900, 5),
    ('com.molvane.tarvolin.pack2', 'صرّة الذهب', 3000, 15),
    ('com.molvane.tarvolin.pack3', 'صندوق الذهب', 6000, 30),
    ('com.molvane.tarvolin.pack4', 'خزنة الذهب', 12000, 50),
    ('com.molvane.tarvolin.pack5', 'كنز الذهب', 25000, 100);

INSERT INTO store_prices (product_id, currency, amount) VALUES
    ('com.molvane.tarvolin.pack1', 'USD', 199),
    ('com.molvane.tarvolin.pack2', 'USD', 399),
    ('com.molvane.tarvolin.pack3', 'USD', 599),
    ('com.molvane.tarvolin.pack4', 'USD', 899),
    ('com.molvane.tarvolin.pack5', 'USD', 1299),
    ('com.molvane.tarvolin.pack1', 'SAR', 749),
    ('com.molvane.tarvolin.pack2', 'SAR', 1499),
    ('com.molvane.tarvolin.pack3', 'SAR', 2299),
    ('com.molvane.tarvolin.pack4', 'SAR', 3399),
    ('com.molvane.tarvolin.pack5', 'SAR', 4899),
    ('com.molvane.tarvolin.pack1', 'AED', 749),
    ('com.molvane.tarvolin.pack2', 'AED', 1499),
    ('com.molvane.tarvolin.pack3', 'AED', 2199),
    ('com.molvane.tarvolin.pack4', 'AED', 3299),
    ('com.molvane.tarvolin.pack5', 'AED', 4799),
    ('com.molvane.tarvolin.pack1', 'EGP', 9999),
    ('com.molvane.tarvolin.pack2', 'EGP', 19999),
    ('com.molvane.tarvolin.pack3', 'EGP', 29999),
    ('com.molvane.tarvolin.pack4', 'EGP', 44999),
    ('com.molvane.tarvolin.pack5', 'EGP', 64999),
    ('com.molvane.tarvolin.pack1', 'KWD', 599),
    ('com.molvane.tarvolin.pack2', 'KWD', 1199),
    ('com.molvane.tarvolin.pack3', 'KWD', 1799),
    ('com.molvane.tarvolin.pack4', 'KWD', 2699),
    ('com.molvane.tarvolin.pack5', 'KWD', 3999),
    ('com.molvane.tarvolin.pack1', 'QAR', 749),
    ('com.molvane.tarvolin.pack2', 'QAR', 1449),
    ('com.molvane.tarvolin.pack3', 'QAR', 2199),
    ('com.molvane.tarvolin.pack4', 'QAR', 3299),
    ('com.molvane.tarvolin.pack5', 'QAR', 4799),
    ('com.molvane.tarvolin.pack1', 'JOD', 1399),
    ('com.molvane.tarvolin.pack2', 'JOD', 2799),
    ('com.molvane.tarvolin.pack3', 'JOD', 4199),
    ('com.molvane.tarvolin.pack4', 'JOD', 6399),
    ('com.molvane.tarvolin.pack5', 'JOD', 9199),
    ('com.molvane.tarvolin.pack1', 'MAD', 1999),
    ('com.molvane.tarvolin.pack2', 'MAD', 3999),
    ('com.molvane.tarvolin.pack3', 'MAD', 5999),
    ('com.molvane.tarvolin.pack4', 'MAD', 8999),
    ('com.molvane.tarvolin.pack5', 'MAD', 12999),
    ('com.molvane.tarvolin.pack1', 'EUR', 199),
    ('com.molvane.tarvolin.pack2', 'EUR', 399),
    ('com.molvane.tarvolin.pack3', 'EUR', 599),
    ('com.molvane.tarvolin.pack4', 'EUR', 899),
    ('com.molvane.tarvolin.pack5', 'EUR', 1299),
    ('com.molvane.tarvolin.pack1', 'GBP', 179),
    ('com.molvane.tarvolin.pack2', 'GBP', 349),
    ('com.molvane.tarvolin.pack3', 'GBP', 549),
    ('com.molvane.tarvolin.pack4', 'GBP', 799),
    ('com.molvane.tarvolin.pack5', 'GBP', 1199);

-- House ads: the game's own promotions ('house') and those of the maker's other games ('cross'). Only active
-- ones are served. A 'picture' ad carries its SVG, served at /v1/ads/creatives/<id>.svg; a 'card' is drawn
-- by the game from the texts and colours. Rewarded ads run at least 15 seconds; banners are at least 320x50.
CREATE TABLE house_ads (
    id               TEXT PRIMARY KEY,
    format           TEXT NOT NULL CHECK (format IN ('interstitial', 'rewarded', 'banner')),
    kind             TEXT NOT NULL CHECK (kind IN ('picture', 'card')),
    promotion        TEXT NOT NULL CHECK (promotion IN ('house', 'cross')),
    title            TEXT NOT NULL,
    body             TEXT NOT NULL,
    call_to_action   TEXT NOT NULL,
    action_url       TEXT NOT NULL,
    picture          TEXT,
    background       TEXT NOT NULL,
    foreground       TEXT NOT NULL,
    accent           TEXT NOT NULL,
    duration_seconds INTEGER NOT NULL,
    width            INTEGER NOT NULL,
    height           INTEGER NOT NULL,
    active           INTEGER NOT NULL DEFAULT 1 CHECK (active IN (0, 1)),
    CHECK ((kind = 'picture') = (picture IS NOT NULL)),
    CHECK ((format = 'rewarded' AND duration_seconds >= 15) OR (format <> 'rewarded' AND duration_seconds = 0)),
    CHECK ((format = 'banner' AND width >= 320 AND height >= 50) OR (format <> 'banner' AND width = 0 AND height = 0))
);

-- Each player's rotation: for every ad he was served, the number of the serve that showed it last.
CREATE TABLE ad_rotation (
    player_id TEXT NOT NULL REFERENCES players (id),
    ad_id     TEXT NOT NULL,
    served    BIGINT NOT NULL,
    PRIMARY KEY (player_id, ad_id)
);

-- One impression token per serve, spent by the impression it records. The ad's format and duration are kept
-- as they were served.
CREATE TABLE ad_tokens (
    token            TEXT PRIMARY KEY,
    player_id        TEXT NOT NULL REFERENCES players (id),
    ad_id            TEXT NOT NULL,
    format           TEXT NOT NULL,
    duration_seconds INTEGER NOT NULL,
    served_at        BIGINT NOT NULL,
    spent            INTEGER NOT NULL
);

-- Recorded impressions. player_id is kept only when the player allowed tracking, and for rewarded ads, where
-- the reward check needs it.
CREATE TABLE ad_impressions (
    id               TEXT PRIMARY KEY,
    ad_id            TEXT NOT NULL,
    format           TEXT NOT NULL,
    tracking         TEXT NOT NULL,
    player_id        TEXT REFERENCES players (id),
    duration_seconds INTEGER NOT NULL,
    recorded_at      BIGINT NOT NULL,
    rewarded_at      BIGINT
);

INSERT INTO house_ads (id, format, kind, promotion, title, body, call_to_action, action_url, picture,
                       background, foreground, accent, duration_seconds, width, height, active) VALUES
    ('store-gold', 'interstitial', 'picture', 'house', 'متجر الذهب',
     'اجمع الذهب والتخطّيات لتعبر الألغاز الصعبة دون أن تتوقف رحلتك.', 'افتح المتجر', 'tarvolin://store',
     '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 320 480" width="320" height="480">
  <rect width="320" height="480" fill="#1B2A49"/>
  <circle cx="160" cy="210" r="130" fill="#F2C14E" opacity="0.18"/>
  <path d="M80 215 Q160 130 240 215 Z" fill="#A0522D"/>
  <rect x="80" y="215" width="160" height="100" rx="10" fill="#8B5A2B"/>
  <rect x="80" y="245" width="160" height="12" fill="#F2C14E"/>
  <rect x="148" y="232" width="24" height="34" rx="4" fill="#F2C14E" stroke="#C9971C" stroke-width="3"/>
  <circle cx="118" cy="350" r="18" fill="#F2C14E" stroke="#C9971C" stroke-width="4"/>
  <circle cx="162" cy="362" r="18" fill="#F2C14E" stroke="#C9971C" stroke-width="4"/>
  <circle cx="206" cy="348" r="18" fill="#F2C14E" stroke="#C9971C" stroke-width="4"/>
  <path d="M60 120 l6 14 l14 6 l-14 6 l-6 14 l-6 -14 l-14 -6 l14 -6 Z" fill="#FFF6D5"/>
  <path d="M258 96 l4 10 l10 4 l-10 4 l-4 10 l-4 -10 l-10 -4 l10 -4 Z" fill="#FFF6D5"/>
</svg>',
     '#1B2A49', '#FFFFFF', '#F2C14E', 0, 0, 0, 1),
    ('challenge-friends', 'interstitial', 'card', 'house', 'تحدَّ أصدقاءك',
     'ابدأ جولة تحدٍّ مع صديق، ومن يجد الكلمات أولاً يفوز بالذهب.', 'ابدأ تحدياً', 'tarvolin://battles', NULL,
     '#0F5257', '#FFFFFF', '#F28F3B', 0, 0, 0, 1),
    ('molvane-souq', 'interstitial', 'card', 'cross', 'سوق الحروف',
     'من مولفان: افتح دكّانك في سوق الحروف وبِع الكلمات لزبائن لا يهدؤون.', 'جرّب سوق الحروف',
     'https://molvane.example/games/souq-alhuruf', NULL,
     '#5B2A86', '#FFFFFF', '#FFD166', 0, 0, 0, 1),
    ('eid-gold', 'interstitial', 'picture', 'house', 'ذهب العيد',
     'هدايا العيد في متجر الذهب: ضعف الذهب في كل حزمة طوال أيام العيد.', 'إلى المتجر', 'tarvolin://store',
     '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 320 480" width="320" height="480">
  <rect width="320" height="480" fill="#0B3C49"/>
  <circle cx="150" cy="150" r="70" fill="#F2C14E"/>
  <circle cx="178" cy="135" r="62" fill="#0B3C49"/>
  <line x1="230" y1="0" x2="230" y2="220" stroke="#C9971C" stroke-width="3"/>
  <path d="M205 220 h50 l-10 70 h-30 Z" fill="#F2C14E"/>
  <rect x="212" y="290" width="36" height="10" fill="#C9971C"/>
  <circle cx="230" cy="250" r="10" fill="#FFF6D5"/>
  <path d="M70 330 l5 12 l12 5 l-12 5 l-5 12 l-5 -12 l-12 -5 l12 -5 Z" fill="#FFF6D5"/>
</svg>',
     '#0B3C49', '#FFFFFF', '#F2C14E', 0, 0, 0, 0),
    ('daily-bonus', 'rewarded', 'picture', 'house', 'المكافأة اليومية',
     'شاهد الإعلان حتى نهايته لتضاعف مكافأتك اليومية من الذهب.', 'احصل على المكافأة', 'tarvolin://daily-bonus',
     '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 320 480" width="320" height="480">
  <rect width="320" height="480" fill="#2E1F47"/>
  <rect x="90" y="200" width="140" height="110" rx="8" fill="#E63946"/>
  <rect x="80" y="170" width="160" height="40" rx="6" fill="#F25C66"/>
  <rect x="150" y="170" width="20" height="140" fill="#F2C14E"/>
  <path d="M160 170 C120 120 95 150 130 168 Z" fill="#F2C14E"/>
  <path d="M160 170 C200 120 225 150 190 168 Z" fill="#F2C14E"/>
  <circle cx="90" cy="360" r="14" fill="#F2C14E"/>
  <circle cx="230" cy="370" r="14" fill="#F2C14E"/>
  <circle cx="160" cy="390" r="14" fill="#F2C14E"/>
</svg>',
     '#2E1F47', '#FFFFFF', '#F2C14E', 15, 0, 0, 1),
    ('molvane-qafila', 'rewarded', 'card', 'cross', 'قافلة الكلمات',
     'لعبة جديدة من مولفان: قُد قافلتك عبر الصحراء وافتح الواحات بالكلمات. شاهد حتى النهاية لتربح الذهب.',
     'اكتشف القافلة', 'https://molvane.example/games/qafilat-alkalimat', NULL,
     '#C8553D', '#FFFFFF', '#F6E7CB', 20, 0, 0, 1),
    ('leaderboard-top', 'banner', 'card', 'house', 'لوحة المتصدرين',
     'هل اسمك بين الأوائل اليوم؟', 'شاهد الترتيب', 'tarvolin://leaderboard', NULL,
     '#14213D', '#FFFFFF', '#FCA311', 0, 320, 50, 1),
    ('molvane-najma', 'banner', 'picture', 'cross', 'نجمة الألغاز',
     'ألغاز النجوم من مولفان، مجاناً.', 'حمّلها الآن', 'https://molvane.example/games/najmat-alalghaz',
     '<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 320 50" width="320" height="50">
  <rect width="320" height="50" fill="#101935"/>
  <path d="M150 9 l5 11 l12 1 l-9 8 l3 12 l-11 -6 l-11 6 l3 -12 l-9 -8 l12 -1 Z" fill="#FFD166" opacity="0.25"/>
  <circle cx="70" cy="14" r="2" fill="#FFFFFF" opacity="0.6"/>
  <circle cx="96" cy="36" r="1.5" fill="#FFFFFF" opacity="0.6"/>
  <circle cx="250" cy="12" r="2" fill="#FFFFFF" opacity="0.6"/>
  <circle cx="282" cy="38" r="1.5" fill="#FFFFFF" opacity="0.6"/>
</svg>',
     '#101935', '#FFFFFF', '#FFD166', 0, 320, 50, 1);
