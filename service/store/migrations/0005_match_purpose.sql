-- What a match was asked for: '' (not said), 'battle' or 'exchange' (one player asks another for gold). Set at
-- creation and never changed. The creations of exchanges are counted per creator over the last day: the
-- partial index keeps their times without weighing on the battles.
ALTER TABLE matches ADD COLUMN purpose TEXT NOT NULL DEFAULT '';
CREATE INDEX matches_exchanges ON matches (created_at) WHERE purpose = 'exchange';
